#!/usr/bin/env bash
# Makes the archives of this folder with gzip, Info-ZIP's zip 3.0, 7-Zip 16.02 (p7zip-full) and Python's zipfile.
# Only for changing them: the tests read the files that lie here.
set -euo pipefail
out=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export LC_ALL=C.UTF-8 TZ=UTC

# gzip: two members, garbage and zeros behind a member, a name and a time in the header.
printf 'first member\n' >first.txt
printf 'second member\n' >second.txt
touch -d '2024-02-03 04:05:06' first.txt second.txt
gzip -nc first.txt >first.gz
gzip -nc9 second.txt >second.gz
cat first.gz second.gz >"$out/two-members.gz"
(cat first.gz && printf 'garbage') >"$out/garbage.gz"
(cat first.gz && head -c 600 /dev/zero) >"$out/zeros.gz"
(cat first.gz && printf '\x1f') >"$out/half-mark.gz"
(cat first.gz && printf '\x1f\x8b garbage') >"$out/mark-and-garbage.gz"
gzip -Nc first.txt >"$out/named.gz"

# A small tree: a folder, an empty file, Cyrillic names.
mkdir -p 'дерево/папка'
printf 'Привет\n' >'дерево/папка/привет.txt'
: >'дерево/пусто'
head -c 5000 /dev/zero >'дерево/zeros.bin'
find 'дерево' -exec touch -d '2024-02-03 04:05:06' {} +

zip -qr "$out/info-zip.zip" 'дерево'
printf 'Привет\n' | zip -q "$out/info-zip-streamed.zip" -
zip -qr -X -UN=UTF8 "$out/info-zip-utf8.zip" 'дерево'
zip -q -X -fz "$out/info-zip-zip64.zip" first.txt
zip -q -X -P secret "$out/info-zip-encrypted.zip" first.txt
7z a -bd "$out/7-zip.zip" 'дерево' >/dev/null
7z a -bd -mm=BZip2 "$out/7-zip-bzip2.zip" дерево/zeros.bin >/dev/null
7z a -bd -psecret -mem=AES256 "$out/7-zip-aes.zip" first.txt >/dev/null

python3 - "$out" <<'PYTHON'
import io, os, sys, zipfile
out = sys.argv[1]
DATE = (2024, 2, 3, 4, 5, 6)

def entry(name, method=zipfile.ZIP_DEFLATED):
    info = zipfile.ZipInfo(name, DATE)
    info.compress_type = method
    info.create_system = 0
    return info

with zipfile.ZipFile(out + "/python.zip", "w") as archive:
    archive.writestr(entry("дерево/"), b"")
    archive.writestr(entry("дерево/stored.txt", zipfile.ZIP_STORED), b"stored\n")
    archive.writestr(entry("deflated.txt"), b"deflated\n" * 100)
    with archive.open(entry("zip64.txt"), "w", force_zip64=True) as file:
        file.write(b"zip64\n")

zipfile.ZipFile(out + "/empty.zip", "w").close()

# zipfile writes no MS-DOS names, so ASCII names of the same length are replaced.
def oem(path, names, page):
    plain = ["%0*d.txt" % (len(name) - 4, i) for i, name in enumerate(names)]
    with zipfile.ZipFile(path, "w") as archive:
        for name in plain:
            archive.writestr(entry(name), b"oem\n")
    data = open(path, "rb").read()
    for old, new in zip(plain, names):
        data = data.replace(old.encode("ascii"), new.encode(page))
    open(path, "wb").write(data)

oem(out + "/cp866.zip", ["Заявление.txt", "раб.txt", "Акт сверки №5.txt"], "cp866")
oem(out + "/cp437.zip", ["résumé.txt", "Müller.txt", "año.txt"], "cp437")

# A name that would leave the folder, with a good one before it.
with zipfile.ZipFile(out + "/unsafe-0.zip", "w") as archive:
    archive.writestr(entry("good.txt"), b"good\n")
    archive.writestr(entry("../evil"), b"evil\n")

# Names that no file system takes together, or at all, behind a good one.
for name, others in {
    "long-part": ["x" * 256],
    "two-cases": ["папка/файл", "папка/ФАЙЛ"],
    "file-and-folder": ["GOOD.txt/file"],
}.items():
    with zipfile.ZipFile("%s/%s.zip" % (out, name), "w") as archive:
        for other in ["good.txt", *others]:
            archive.writestr(entry(other), b"file\n")

# An entry of 4 GiB and a byte of zeros, stored: what stands before the zeros and what stands behind them.
class Holes(io.FileIO):
    def write(self, data):
        if data.count(0) < len(data):
            return super().write(data)
        self.seek(len(data), os.SEEK_CUR)
        return len(data)

with Holes("large.zip", "w+") as file:
    with zipfile.ZipFile(file, "w") as archive:
        with archive.open(entry("zeros", zipfile.ZIP_STORED), "w", force_zip64=True) as content:
            for _ in range(4096):
                content.write(bytes(1 << 20))
            content.write(bytes(1))
    head = 30 + len("zeros") + 20
    file.seek(0)
    open(out + "/beyond-4-gib.head", "wb").write(file.read(head))
    file.seek(head + (1 << 32) + 1)
    open(out + "/beyond-4-gib.tail", "wb").write(file.read())
PYTHON
