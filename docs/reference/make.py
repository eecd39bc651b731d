#!/usr/bin/env python3
"""make.py PROGRAM DIRECTORY: makes DIRECTORY/html of the headers, the pages and the records, by Doxygen, without a warning
and without a dead link. To be called in the repository's root, with the program zrasn."""
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, "docs/reference")
import links
import pages
import records

HEADERS = ["src/asn1", "src/zrz", "base_idls", "zrasn"]


def main():
    program, directory = sys.argv[1], Path(sys.argv[2])
    shutil.rmtree(directory, ignore_errors=True)
    made = directory / "pages"
    made.mkdir(parents=True)
    documents = ["README.md", "CHANGELOG.md", *sorted(str(path) for path in Path("docs").glob("*.md"))]
    files = set()
    contents = "\n## All pages {#all_pages}\n\n- [The records](@ref records)\n"
    for document in documents:
        text = pages.convert(document, Path(document).read_text(), documents, files)
        (made / document.replace("/", "_")).write_text(text)
        title = re.search("^# (.*) {#", text, re.M)[1]
        contents += f"- [{title}](@ref {pages.page_name(document)})\n" if document != "README.md" else ""
    with (made / "README.md").open("a") as main_page:
        main_page.write(contents)
    records.Records(program).write(made)
    version = re.search(r"project\(zrasn VERSION (\S+)", Path("CMakeLists.txt").read_text())[1]
    settings = Path("docs/reference/Doxyfile").read_text() + f"""
INPUT = {' '.join(HEADERS)} docs/reference/namespaces.dox {made}
OUTPUT_DIRECTORY = {directory}
PROJECT_NUMBER = {version}
USE_MDFILE_AS_MAINPAGE = {made}/README.md
"""
    status = subprocess.run(["doxygen", "-"], input=settings, text=True).returncode
    for file in filter(os.path.isfile, files):
        copy = directory / "html" / "files" / f"{file}.txt"
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(file, copy)
    sys.exit(status or links.check(directory / "html"))


main()
