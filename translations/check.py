"""Fails where a translation is missing, unfinished, out of date or at odds with its source text.

Usage: check.py FOLDER UPDATE...: the folder of the .ts files, and the command that brings those named behind it
up to date with the sources.
"""
import collections
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

# What has to be the same in a text and its translation: placeholders, mnemonics, wildcards, and the punctuation
# at the end, however the language writes it.
MARKS = re.compile(r"%L?\d+|%n|&|\(\*\)|[:?!.…]+$")
WRITTEN_IN_OTHER_SCRIPTS = str.maketrans("：？！。؟", ":?!.?")

# What is wrong in a language whatever the source says.
WRONG = {
    "ar": r"[?,;]",
    "es": r"^[^¿]*\?|^[^¡]*!",
    "fr": r"[^\u00a0][:;?!]|'",
    "zh_CN": r"[:;?!,]",
}


def marks(text):
    return collections.Counter(MARKS.findall(text.translate(WRITTEN_IN_OTHER_SCRIPTS)))


def faults(path):
    root = ElementTree.parse(path).getroot()
    wrong = WRONG.get(root.get("language"), "(?!)")
    for message in root.iter("message"):
        source, translation = message.findtext("source"), message.find("translation")
        texts = [form.text or "" for form in translation.findall("numerusform")] or [translation.text or ""]
        for text in texts:
            if translation.get("type"):
                yield source, translation.get("type")
            elif not text.strip():
                yield source, "empty"
            elif marks(text) != marks(source) or text.strip() != text:
                yield source, f"placeholders, mnemonics, spaces or punctuation differ in “{text}”"
            elif re.search(wrong, text):
                yield source, f"punctuation of another language in “{text}”"


def main(folder, *update):
    failed = False
    with tempfile.TemporaryDirectory() as scratch:
        paths = sorted(pathlib.Path(folder).glob("*.ts"))
        for path in paths:
            fresh = shutil.copy(path, scratch)
            subprocess.run([*update, fresh], check=True)
            found = [f"{source}: {what}" for source, what in faults(fresh)]
            if pathlib.Path(fresh).read_bytes() != path.read_bytes():
                found.append("not up to date with the sources: run tools/translate")
            for fault in found:
                print(f"{path.name}: {fault}")
            failed = failed or bool(found)
    return failed or not paths


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
