"""Reads as much of an IDL file as is needed: the library, interfaces, coclasses, enumerations, and their attributes.

It is not a compiler: the file has been through one. Text that is none of these declarations is passed over; text that
begins as one and does not go on as one raises IdlError with its line.
"""

import re
from dataclasses import dataclass, field

# A word may hold '-' and '.', so that a uuid, a version and a negative number are one word each.
TOKEN = re.compile(r'"(?:[^"\\]|\\.)*"|[\w.\-]+|[^\s\w]')
SKIPPED = re.compile(r'("(?:[^"\\]|\\.)*")|//[^\n]*|/\*.*?\*/|^[ \t]*#[^\n]*', re.DOTALL | re.MULTILINE)
DISPATCH_IDS = {"DISPID_VALUE": 0, "DISPID_NEWENUM": -4}


class IdlError(Exception):
    pass


@dataclass
class Parameter:
    name: str
    type: str
    attributes: dict


@dataclass
class Member:
    name: str
    attributes: dict
    parameters: list

    @property
    def dispatch_id(self):
        text = self.attributes.get("id", "")
        return DISPATCH_IDS[text] if text in DISPATCH_IDS else int(text, 0)


@dataclass
class Interface:
    name: str
    base: str
    attributes: dict
    members: list


@dataclass
class Coclass:
    name: str
    attributes: dict
    interfaces: list  # names, the default one first


@dataclass
class Enumeration:
    name: str
    attributes: dict
    values: list  # (name, text of the value, attributes)


@dataclass
class Library:
    name: str = ""
    attributes: dict = field(default_factory=dict)
    interfaces: dict = field(default_factory=dict)
    coclasses: list = field(default_factory=list)
    enumerations: dict = field(default_factory=dict)


class Reader:
    """The tokens of the file, with the line each stands on."""

    def __init__(self, text):
        blank = lambda match: match.group(1) or re.sub(r"[^\n]", " ", match.group(0))  # lines keep their numbers
        text = SKIPPED.sub(blank, text)
        self.tokens = [(match.group(0), text.count("\n", 0, match.start()) + 1) for match in TOKEN.finditer(text)]
        self.position = 0

    def peek(self, ahead=0):
        index = self.position + ahead
        return self.tokens[index][0] if index < len(self.tokens) else ""

    def take(self, wanted=None):
        token = self.peek()
        if not token or (wanted and token != wanted):
            line = self.tokens[min(self.position, len(self.tokens) - 1)][1] if self.tokens else 1
            raise IdlError(f"line {line}: found '{token}' where '{wanted or 'more text'}' is expected")
        self.position += 1
        return token

    def accept(self, wanted):
        if self.peek() == wanted:
            self.position += 1
            return True
        return False

    def until(self, *ends):
        """The tokens up to one of the ends, which stays; what stands between brackets of any kind is passed whole."""
        found, depth = [], 0
        while depth or self.peek() not in ends:
            token = self.take()
            depth += (token in ("(", "[", "{")) - (token in (")", "]", "}"))
            found.append(token)
        return found


def unquoted(tokens):
    """Strings side by side are one string; anything else is joined as it stands."""
    if tokens and all(token.startswith('"') for token in tokens):
        return re.sub(r"\\(.)", r"\1", "".join(token[1:-1] for token in tokens))
    return "".join(tokens)


def read_attributes(reader):
    attributes = {}
    while reader.accept("["):
        while not reader.accept("]"):
            name, value = reader.take(), ""
            if reader.accept("("):
                value = unquoted(reader.until(")"))
                reader.take(")")
            attributes[name] = value
            reader.accept(",")
    return attributes


def read_parameter(reader):
    attributes = read_attributes(reader)
    words = reader.until(",", ")")
    reader.accept(",")
    return Parameter(words[-1], " ".join(words[:-1]).replace(" *", "*"), attributes)


def read_member(reader):
    attributes = read_attributes(reader)
    reader.take("HRESULT")
    name, parameters = reader.take(), []
    reader.take("(")
    if reader.peek() == "void" and reader.peek(1) == ")":
        reader.take()
    while not reader.accept(")"):
        parameters.append(read_parameter(reader))
    reader.take(";")
    return Member(name, attributes, parameters)


def read_interface(reader, attributes, library):
    name, base, members = reader.take(), "", []
    if reader.accept(";"):  # a forward declaration
        return
    if reader.accept(":"):
        base = reader.take()
    reader.take("{")
    while not reader.accept("}"):
        members.append(read_member(reader))
    library.interfaces[name] = Interface(name, base, attributes, members)


def read_coclass(reader, attributes, library):
    name, interfaces = reader.take(), []
    reader.take("{")
    while not reader.accept("}"):
        is_default = "default" in read_attributes(reader)
        reader.take("interface")
        interfaces.insert(0 if is_default else len(interfaces), reader.take())
        reader.take(";")
    library.coclasses.append(Coclass(name, attributes, interfaces))


def read_enumeration(reader, attributes, library):
    tag, values = ("" if reader.peek() == "{" else reader.take()), []
    reader.take("{")
    while not reader.accept("}"):
        own = read_attributes(reader)
        name = reader.take()
        value = "".join(reader.until(",", "}"))[1:]
        reader.accept(",")
        values.append((name, value or str(int(values[-1][1], 0) + 1 if values else 0), own))
    name = tag if reader.peek() == ";" else reader.take()
    library.enumerations[name] = Enumeration(name, attributes, values)


READERS = {"interface": read_interface, "coclass": read_coclass, "enum": read_enumeration}


def parse(text):
    """The Library that the text of an IDL file declares."""
    reader, library, attributes = Reader(text), Library(), {}
    while reader.peek():
        attributes.update(read_attributes(reader))
        word = reader.take() if reader.peek() else ""
        if word == "typedef":
            attributes.update(read_attributes(reader))
        elif word in READERS:
            READERS[word](reader, attributes, library)
            attributes = {}
        elif word == "library":
            library.name, library.attributes = reader.take(), dict(attributes)
        elif word in (";", "{", "}"):  # "library NAME {" and "import ...;" end here and leave no attributes behind
            attributes = {}
    return library
