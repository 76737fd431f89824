"""Writes the packages of the Windows Installer: the tables as texts, which msibuild puts into a database.

The tables are written out instead of being compiled by wixl, which gets some of them wrong without a word: it has no root
that follows the scope, no version of files, no bounds of upgrades that include their end. What they mean is told by
Microsoft's "Windows Installer Database Tables".

Everything but the bytes of the files is computed from the version, so the same files make the same package.
"""

import datetime
import hashlib
import os
import pathlib
import subprocess
import tempfile
import uuid

import registration

NAMESPACE = uuid.UUID("5f6d6b0e-3c0f-5c8e-9d0a-8e2f0f4f7c11")
UPGRADE_CODE = "{B1D0C2A5-7F3E-4E7C-9A64-3B0B6E5D9F27}"
MANUFACTURER = "Zim Vetrel"
PRODUCT = "Vetrel Corvane 2"
SETTINGS_KEY = "Software\\ZimVetrel\\VetrelCorvane"
# What the package remembers of its own installation: which settings it wrote, and the fourth number of its version.
MEMORY_KEY = SETTINGS_KEY + "\\Installation"
# A setting that was not given is written here instead, so that the one which is there stays as it is.
NOWHERE_KEY = MEMORY_KEY + "\\NotGiven"
TRUSTED_SITES = 9

# Of Software\Classes, what there is twice on a Windows of 64 bits.
OF_BITNESS = ("CLSID\\", "Interface\\")
ROOT_BY_SCOPE = -1  # HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE, as the installation is for a user or the machine
ROOTS = {"USER": 1, "MACHINE": 2}
COMPONENT_REGISTRY_KEY_PATH, COMPONENT_64BIT = 4, 256
FILE_VITAL = 512
ACTION_SET_PROPERTY = 51
SEARCH_VALUE, SEARCH_64BIT = 2, 16
UPGRADE_ONLY_DETECT, UPGRADE_MIN_INCLUSIVE, UPGRADE_MAX_INCLUSIVE = 2, 256, 512
SCHEMA = 500  # Windows Installer 5.0, that of Windows 7
COMPRESSED, READ_ONLY = 2, 2
US_ENGLISH = 1033

# Name: its columns with their types, as msibuild reads them, and how many of them are the key.
COLUMNS = {
    "AdminExecuteSequence": ("Action s72, Condition S255, Sequence I2", 1),
    "AdvtExecuteSequence": ("Action s72, Condition S255, Sequence I2", 1),
    "AppSearch": ("Property s72, Signature_ s72", 2),
    "Component": ("Component s72, ComponentId S38, Directory_ s72, Attributes i2, Condition S255, KeyPath S72", 1),
    "CreateFolder": ("Directory_ s72, Component_ s72", 2),
    "CustomAction": ("Action s72, Type i2, Source S72, Target S255", 1),
    "Directory": ("Directory s72, Directory_Parent S72, DefaultDir l255", 1),
    "Feature": (
        "Feature s38, Feature_Parent S38, Title L64, Description L255, Display I2, Level i2, Directory_ S72, Attributes i2",
        1,
    ),
    "FeatureComponents": ("Feature_ s38, Component_ s72", 2),
    "File": (
        "File s72, Component_ s72, FileName l255, FileSize i4, Version S72, Language S20, Attributes I2, Sequence i2",
        1,
    ),
    "InstallExecuteSequence": ("Action s72, Condition S255, Sequence I2", 1),
    "InstallUISequence": ("Action s72, Condition S255, Sequence I2", 1),
    "LaunchCondition": ("Condition s255, Description l255", 1),
    "Media": ("DiskId i2, LastSequence i2, DiskPrompt L64, Cabinet S255, VolumeLabel S32, Source S72", 1),
    "Property": ("Property s72, Value l0", 1),
    "RegLocator": ("Signature_ s72, Root i2, Key s255, Name S255, Type I2", 1),
    "Registry": ("Registry s72, Root i2, Key l255, Name L255, Value L0, Component_ s72", 1),
    "RemoveRegistry": ("RemoveRegistry s72, Root i2, Key l255, Name L255, Component_ s72", 1),
    "Upgrade": (
        "UpgradeCode s38, VersionMin S20, VersionMax S20, Language S255, Attributes i4, Remove S255, ActionProperty s72",
        5,
    ),
}

SEQUENCES = {
    "InstallUISequence": {"ExecuteAction": 1300},
    "AdminExecuteSequence": {
        "CostInitialize": 800, "FileCost": 900, "CostFinalize": 1000, "InstallValidate": 1400,
        "InstallInitialize": 1500, "InstallAdminPackage": 3900, "InstallFiles": 4000, "InstallFinalize": 6600,
    },
    "AdvtExecuteSequence": {
        "CostInitialize": 800, "CostFinalize": 1000, "InstallValidate": 1400, "InstallInitialize": 1500,
        "PublishFeatures": 6300, "PublishProduct": 6400, "InstallFinalize": 6600,
    },
    # What searches comes first, then our own actions (from 100), then what judges by them.
    "InstallExecuteSequence": {
        "FindRelatedProducts": 25, "AppSearch": 50, "LaunchConditions": 400, "ValidateProductID": 700,
        "CostInitialize": 800, "FileCost": 900, "CostFinalize": 1000, "InstallValidate": 1400,
        "InstallInitialize": 1500, "RemoveExistingProducts": 1501, "ProcessComponents": 1600,
        "UnpublishFeatures": 1800, "RemoveRegistryValues": 2600, "RemoveFiles": 3500, "RemoveFolders": 3600,
        "CreateFolders": 3700, "InstallFiles": 4000, "WriteRegistryValues": 5000, "RegisterUser": 6000,
        "RegisterProduct": 6100, "PublishFeatures": 6300, "PublishProduct": 6400, "InstallFinalize": 6600,
    },
}
FIRST_OWN_ACTION = 100


def guid(text):
    return "{" + str(uuid.uuid5(NAMESPACE, text)).upper() + "}"


def settings():
    """The administrator's properties: (property, name of the registry value, its text); the texts are formatted."""
    yield "LOGLEVEL", "LogLevel", "#[Level]"
    yield "LOGPATH", "LogPath", "[LOGPATH]"
    for number in range(1, TRUSTED_SITES + 1):
        yield f"TRUSTEDSITE{number}", f"[TRUSTEDSITE{number}]", "#1"


def setting_key(name):
    return SETTINGS_KEY + ("\\TrustedSites" if name.startswith("[") else "")


class Package:
    """One package: x64 brings both DLLs, x86 the one of 32 bits for a Windows of 32 bits."""

    def __init__(self, arch, version, dlls, notice):
        self.arch, self.version = arch, version
        self.views = ("x64", "x86") if arch == "x64" else ("x86",)
        self.build = version.split(".")[3]
        self.three = version.rpartition(".")[0]
        self.files = {f"Dll{view}": pathlib.Path(dlls[view]) for view in self.views} | {"Notice": pathlib.Path(notice)}
        self.tables = {name: [] for name in COLUMNS}
        self.actions = {}
        self.shared = set()  # what of the classes both bitnesses see, and one of them writes
        self.add_product()
        self.add_files()
        for view in self.views:
            self.add_registration(view)
            self.add_settings(view)
        self.add_memory()
        self.add_upgrades()
        self.add_sequences()

    def add(self, table, *values):
        self.tables[table].append(tuple(map(str, values)))

    def add_product(self):
        properties = {
            "ALLUSERS": "1",  # for the machine, unless told otherwise
            "ARPNOMODIFY": "1",
            "MSIRESTARTMANAGERCONTROL": "Disable",  # or a silent update would close the programs that use the DLL
            "Manufacturer": MANUFACTURER,
            "ProductCode": guid(f"product {self.version} {self.arch}"),
            "ProductLanguage": US_ENGLISH,
            "ProductName": PRODUCT,
            "ProductVersion": self.version,
            "REBOOT": "ReallySuppress",  # or a silent update of a DLL in use would restart the machine
            # Not those of the administrator: any user may have a product of the machine repaired, and would set them there.
            "SecureCustomProperties": "OLDER;SAME;NEWER",
            "UpgradeCode": UPGRADE_CODE,
        }
        for name, value in properties.items():
            self.add("Property", name, value)
        self.add("Feature", "Complete", "", PRODUCT, "", 1, 1, "TARGETDIR", 0)
        self.add("LaunchCondition", "Installed OR VersionNT >= 601", "[ProductName] needs Windows 7 or later.")
        if self.arch == "x86":
            self.add("LaunchCondition", "Installed OR NOT VersionNT64",
                     "This package is for a Windows of 32 bits; the x64 package brings both bitnesses.")

    def add_component(self, name, directory, view, attributes, key_path):
        attributes |= COMPONENT_64BIT if view == "x64" else 0
        # One name may lie in another place in the other package, and is another component there.
        self.add("Component", name, guid(f"component {name} {directory}"), directory, attributes, "", key_path)
        self.add("FeatureComponents", "Complete", name)

    def add_files(self):
        """Each bitness has a folder of its own, also where both lie in one place, as they do for a user."""
        self.add("Directory", "TARGETDIR", "", "SourceDir")
        for view in self.views:
            programs, product, own = ("ProgramFiles64Folder" if view == "x64" else "ProgramFilesFolder",
                                      f"PRODUCTFOLDER{view[1:]}", f"FOLDER{view[1:]}")
            self.add("Directory", programs, "TARGETDIR", ".")
            self.add("Directory", product, programs, "VETREL~1|Vetrel Corvane")
            self.add("Directory", own, product, view)
            self.add_component(f"Dll{view}", own, view, 0, f"Dll{view}")
            for folder in (own, product):
                self.add("CreateFolder", folder, f"Dll{view}")  # what is listed here also goes, when it is empty
        self.add_component("Notice", f"PRODUCTFOLDER{self.views[0][1:]}", self.views[0], 0, "Notice")
        for sequence, (name, path) in enumerate(self.files.items(), 1):
            is_dll = name != "Notice"
            self.add("File", name, name, "VETREL~1.DLL|VetrelCorvane2.dll" if is_dll else "NOTICE.txt",
                     path.stat().st_size, self.version if is_dll else "", US_ENGLISH if is_dll else "",
                     FILE_VITAL, sequence)
        self.add("Media", 1, len(self.files), "", "#files.cab", "", "")

    def add_value(self, key, name, value, component):
        self.add("Registry", self.next_value(), ROOT_BY_SCOPE, key, name, value, component)

    def next_value(self):
        return f"Value{len(self.tables['Registry']) + 1:04}"

    def add_registration(self, view):
        folder = f"[FOLDER{view[1:]}]"
        for entry in registration.entries(view, self.version, f"[#Dll{view}]", folder):
            if not entry.key.startswith(OF_BITNESS):
                if (entry.key, entry.name) in self.shared:
                    continue
                self.shared.add((entry.key, entry.name))
            # "*" and no value: the key itself comes and goes.
            name, value = ("*", "") if entry.value is None else (entry.name, entry.value)
            self.add_value(f"Software\\Classes\\{entry.key}", name, value, f"Dll{view}")

    def add_settings(self, view):
        """In the view of each bitness: what was given, and the memory of it."""
        component = f"Settings{view}"
        self.add_component(component, f"FOLDER{view[1:]}", view, COMPONENT_REGISTRY_KEY_PATH, self.next_value())
        self.add_value(MEMORY_KEY, "Build", self.build, component)
        self.add_value(MEMORY_KEY, "-", "", component)  # goes with all that is in it
        for name, value_name, value in settings():
            self.add_value(MEMORY_KEY, name, f"[{name}]", component)
            self.add_value(f"[Key_{name}]", value_name, value, component)
            if value_name.startswith("["):  # the site whose place another one takes
                self.add("RemoveRegistry", f"Old{name}{view}", ROOT_BY_SCOPE, f"[Key_{name}]", f"[Was_{name}]", component)

    def set_property(self, name, text, condition):
        """Our actions run in the order in which they are added. `condition` may have 255 characters."""
        action = f"Set{len(self.actions) + 1}"
        self.add("CustomAction", action, ACTION_SET_PROPERTY, name, text)
        self.actions[action] = condition

    def add_memory(self):
        """What was given stands for what is given now. Only a value that is given, or removed with the product that
        wrote it, is touched: neither an upgrade nor a repair changes what somebody has set since."""
        for_user = "NOT ALLUSERS OR (ALLUSERS=2 AND MSIINSTALLPERUSER=1)"
        kind = SEARCH_VALUE | (SEARCH_64BIT if self.arch == "x64" else 0)
        for name in ("Build", *(name for name, _, _ in settings())):
            for scope, root in ROOTS.items():
                self.add("RegLocator", f"{scope}_{name}", root, MEMORY_KEY, name, kind)
                self.add("AppSearch", f"{scope}_{name.upper()}", f"{scope}_{name}")
            self.set_property(f"Was_{name}", f"[USER_{name.upper()}]", for_user)
            self.set_property(f"Was_{name}", f"[MACHINE_{name.upper()}]", f"NOT ({for_user})")
        for name, value_name, _ in settings():
            self.add("Property", f"Key_{name}", NOWHERE_KEY)
            self.set_property(f"Key_{name}", setting_key(value_name),
                              f'{name}<>"" OR (Was_{name}<>"" AND REMOVE~="ALL" AND NOT UPGRADINGPRODUCTCODE)')
            self.set_property(name, f"[Was_{name}]", f'{name}=""')
        # A number even where it is written nowhere.
        self.add("Property", "Level", "0")
        self.set_property("Level", "[LOGLEVEL]", 'LOGLEVEL<>""')
        # By now LOGLEVEL may be what is remembered; removing is refused by nothing.
        self.add("LaunchCondition", 'REMOVE~="ALL" OR LOGLEVEL="" OR (LOGLEVEL >= 0 AND LOGLEVEL <= 4)',
                 "LOGLEVEL is a number from 0 to 4.")
        # In the table of what is removed this name means the whole key.
        self.add("LaunchCondition", " AND ".join(f'TRUSTEDSITE{n}<>"-"' for n in range(1, TRUSTED_SITES + 1)),
                 "A trusted site is not given as -.")

    def add_upgrades(self):
        """The Windows Installer compares three numbers of a version; the fourth is compared by our condition."""
        for low, high, attributes, found in (
            ("0.0.0", self.three, UPGRADE_MIN_INCLUSIVE, "OLDER"),
            (self.three, self.three, UPGRADE_MIN_INCLUSIVE | UPGRADE_MAX_INCLUSIVE, "SAME"),
            (self.three, "", UPGRADE_ONLY_DETECT, "NEWER"),
        ):
            self.add("Upgrade", UPGRADE_CODE, low, high, "", attributes, "", found)
        self.add("LaunchCondition", f"NOT NEWER AND NOT (SAME AND Was_Build > {self.build})",
                 "A newer version of [ProductName] is installed.")

    def add_sequences(self):
        for table, actions in SEQUENCES.items():
            for action, sequence in actions.items():
                self.add(table, action, "", sequence)
        for sequence, (action, condition) in enumerate(self.actions.items(), FIRST_OWN_ACTION):
            self.add("InstallExecuteSequence", action, condition, sequence)

    def text_of(self, table):
        """The table in the form that msibuild imports."""
        columns, keys = COLUMNS[table]
        names, types = zip(*(column.split() for column in columns.split(", ")))
        lines = [names, types, (table, *names[:keys]), *sorted(self.tables[table])]
        return "".join("\t".join(line) + "\r\n" for line in lines)

    def summary(self, package_code, moment):
        """The summary in the form that msibuild imports; the numbers are those of MSDN's "Summary Information Stream"."""
        time = datetime.datetime.fromtimestamp(moment, datetime.timezone.utc).strftime("%Y/%m/%d %H:%M:%S")
        values = {
            1: 1252, 2: "Installation Database", 3: f"{PRODUCT} {self.version} {self.arch}", 4: MANUFACTURER,
            5: "Installer", 7: f"{'x64' if self.arch == 'x64' else 'Intel'};{US_ENGLISH}", 9: package_code,
            12: time, 13: time, 14: SCHEMA, 15: COMPRESSED, 18: "msibuild", 19: READ_ONLY,
        }
        rows = "".join(f"{number}\t{value}\r\n" for number, value in values.items())
        return "PropertyId\tValue\r\ni2\tl255\r\n_SummaryInformation\tPropertyId\r\n" + rows

    def cabinet(self, folder, moment):
        for name, path in self.files.items():
            (folder / name).write_bytes(path.read_bytes())
            os.utime(folder / name, (moment, moment))
        run("gcab", "--create", "--zip", "--nopath", "files.cab", *self.files, cwd=folder)

    def write(self, path, moment):
        """Writes the package; files in it are dated by `moment`, in seconds since 1970."""
        path = pathlib.Path(path).absolute()
        path.unlink(missing_ok=True)
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            self.cabinet(folder, moment)
            texts = {table: self.text_of(table) for table in COLUMNS if self.tables[table]}
            content = hashlib.sha256((folder / "files.cab").read_bytes() + "".join(texts.values()).encode())
            texts["_SummaryInformation"] = self.summary(guid(f"package {content.hexdigest()}"), moment)
            imports = []
            for table, text in texts.items():
                (folder / f"{table}.idt").write_bytes(text.encode("ascii"))
                imports += ["-i", f"{table}.idt"]
            run("msibuild", path, *imports, cwd=folder)
            run("msibuild", path, "-a", "files.cab", "files.cab", cwd=folder)


def run(*command, cwd=None):
    environment = {**os.environ, "TZ": "UTC", "LC_ALL": "C.UTF-8"}
    subprocess.run([str(word) for word in command], cwd=cwd, check=True, env=environment, stdout=subprocess.DEVNULL)
