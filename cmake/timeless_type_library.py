"""Makes two runs of widl give the same bytes: writes a fixed time over the ones that it put into a type library.

widl stores when it ran as a text ("Created by WIDL version 7.0 at Sun Nov 22 02:46:49 2026") and, in the entry behind
it, as a number of seconds, and has no option against either.

usage: timeless_type_library.py FILE
"""

import calendar
import pathlib
import re
import struct
import sys
import time

VT_UI4 = b"\x13\x00"
# The fill of the format up to the next multiple of four is the letter W.
STAMP = re.compile(rb"(Created by WIDL version \S+ at )(.{24})(\nW*" + VT_UI4 + rb")(.{4})(?=WW)", re.DOTALL)
FIXED_SECONDS = 0
FIXED_TEXT = time.asctime(time.gmtime(FIXED_SECONDS)).encode()
HOURS_OF_ANY_ZONE = 15


def timeless(library):
    def replaced(match):
        # The text is local time. That both tell the same moment shows that the right bytes were found.
        told = calendar.timegm(time.strptime(match[2].decode()))
        if abs(told - struct.unpack("<I", match[4])[0]) > HOURS_OF_ANY_ZONE * 3600:
            sys.exit("timeless_type_library: the two times of the type library differ")
        return match[1] + FIXED_TEXT + match[3] + struct.pack("<I", FIXED_SECONDS)

    result, count = STAMP.subn(replaced, library)
    if count != library.count(b"Created by WIDL"):
        sys.exit("timeless_type_library: widl wrote its time in a form that is not known here")
    return result


path = pathlib.Path(sys.argv[1])
path.write_bytes(timeless(path.read_bytes()))
