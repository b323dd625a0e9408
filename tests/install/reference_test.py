#!/usr/bin/env python3
"""Every function the library exports has its reference: in the XML that
Doxygen made for the package, a brief description, every parameter
described, and its result codes (or a function whose listed codes it
shares); every record of the header has a description; the in-process
server's entry points, which the header does not declare, are named on the
main page.

    reference_test.py DOXYGEN_XML_DIR DEF_FILE MAIN_PAGE
"""
import re
import sys
import xml.etree.ElementTree as ET


def text(node):
    return "".join(node.itertext()).strip() if node is not None else ""


def main():
    xml_dir, def_file, main_page = sys.argv[1:4]
    exports, entry_points = [], []
    for line in open(def_file):
        match = re.match(r"\s+(\w+)\s+(@\d+|PRIVATE)", line)
        if match:
            (entry_points if match.group(2) == "PRIVATE" else exports).append(match.group(1))

    header = ET.parse(f"{xml_dir}/vlapi_8h.xml")
    documented = {}
    for member in header.iter("memberdef"):
        if member.get("kind") == "function":
            documented[text(member.find("name"))] = member

    def lists_codes(name, seen):
        """The function's codes are listed, or are those of functions it names."""
        member = documented.get(name)
        if member is None or name in seen:
            return False
        seen.add(name)
        returns = [s for s in member.iter("simplesect") if s.get("kind") == "return"]
        codes = text(returns[0]) if returns else ""
        return "VL_OK" in codes or any(
            lists_codes(other, seen) for other in re.findall(r"Vlx\w+", codes))

    failures = []
    for name in exports:
        member = documented.get(name)
        if member is None:
            failures.append(f"{name}: not in the reference")
            continue
        if not text(member.find("briefdescription")):
            failures.append(f"{name}: no brief description")
        params = [text(p.find("declname")) for p in member.findall("param")]
        described = {text(n) for n in member.iter("parametername")}
        for param in params:
            if param and param not in described:
                failures.append(f"{name}: parameter {param} not described")
        if not lists_codes(name, set()):
            failures.append(f"{name}: no result codes")
    records = [text(c) for c in header.iter("innerclass")]
    for record in header.iter("innerclass"):
        compound = ET.parse(f"{xml_dir}/{record.get('refid')}.xml").find("compounddef")
        if not text(compound.find("briefdescription")):
            failures.append(f"{text(record)}: record without a description")
    page = open(main_page).read()
    for name in entry_points:
        if name not in page:
            failures.append(f"{name}: not named on the main page")

    for failure in failures:
        print("FAILED:", failure)
    failing = {failure.split(":")[0] for failure in failures}
    checked = len(exports) + len(entry_points) + len(records)
    print(f"{checked - len(failing)} passed, {len(failing)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
