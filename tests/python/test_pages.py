"""The examples of the pages do what the pages say. ZRASN: the program, or nothing."""
import doctest
import os
import re
import subprocess
from pathlib import Path

import pytest
import zrasn

DOCS = Path(__file__).parents[2] / "docs"


@pytest.mark.parametrize("page", ["python.md", "archives.md"])
def test_page(page, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    if page == "archives.md":
        pytest.importorskip("dask.bag")
    failed, tried = doctest.testfile(str(DOCS / page), module_relative=False, optionflags=doctest.ELLIPSIS)
    assert failed == 0 and tried > 4
    program = os.environ.get("ZRASN")
    text = (DOCS / page).read_text()
    for script, printed in re.findall(r"```sh\n(.*?)```\n+```\n(.*?)```", text, re.S) if program else ():
        path = f"{Path(program).parent}:{os.environ['PATH']}"
        done = subprocess.run(["sh", "-ec", script], env={"PATH": path}, capture_output=True, text=True, check=True)
        assert done.stdout == printed
    assert set(zrasn.__all__) - {"Error", "Secret"} <= set(re.findall(r"`(\w+)\(", (DOCS / "python.md").read_text()))


def test_docstring():
    assert doctest.testmod(zrasn).failed == 0
