import os
import re
import subprocess
import sys

EXPECTED = """\
Item     Description                            Quantity  Price    Extended  Packs
-------  -------------------------------------  --------  -------  --------  -----
HT-1010  Claw hammer, 16 oz, hickory handle            2  23.4500     46.90  fit
FX-2040  Wood screw 4.5 × 50, countersunk, T20       130   0.1125     14.62  of 50
SF-3020  Work gloves, nitrile, size 9 (pair)          24   2.8750     69.00  fit
CL-4010  All-purpose cleaner, citrus, 1 l             12   3.4900     41.88  fit
PT-5030  Drill bits HSS, 1-10 mm, 19 pieces           10  27.3333    273.33  fit

The order comes to 445.74.

What does not fit its packs is rounded up to the next one.

Item     Description                            Quantity  Price    Extended  Packs
-------  -------------------------------------  --------  -------  --------  -----
HT-1010  Claw hammer, 16 oz, hickory handle            2  23.4500     46.90  fit
FX-2040  Wood screw 4.5 × 50, countersunk, T20       150   0.1125     16.88  fit
SF-3020  Work gloves, nitrile, size 9 (pair)          24   2.8750     69.00  fit
CL-4010  All-purpose cleaner, citrus, 1 l             12   3.4900     41.88  fit
PT-5030  Drill bits HSS, 1-10 mm, 19 pieces           10  27.3333    273.33  fit

The order comes to 447.99.

Order  Number  Submitted            Total
-----  ------  -------------------  ------
    1  PO-7    DATE                 447.99

"""


def run(source, *arguments):
    return subprocess.run(
        [source / "examples/python/order_from_catalogue.py", *arguments],
        capture_output=True,
        text=True,
        env={**os.environ, "PYTHONIOENCODING": "utf-8", "PATH": f"{os.path.dirname(sys.executable)}:/usr/bin:/bin"},
    )


def without_date(text):
    return re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", "DATE".ljust(19), text)


def test_the_example(source):
    process = run(source)
    assert (process.stderr, process.returncode) == ("", 0)
    assert without_date(process.stdout) == EXPECTED


def test_the_example_keeps_a_store(source, tmp_path):
    for orders in (1, 2):
        process = run(source, "--store", tmp_path, "SF-3020=24")
        assert (process.stderr, process.returncode) == ("", 0)
        assert len(re.findall(r"PO-7 +\S+ \S+ +69.00", process.stdout)) == orders
        assert "rounded up" not in process.stdout


def test_what_the_example_refuses(source, tmp_path):
    process = run(source, "no such item")
    assert process.returncode == 2 and "not of the form ITEM=QUANTITY" in process.stderr
    process = run(source, "XX=1")
    assert (process.returncode, process.stderr) == (1, "The catalogue has no item XX.\n")
    (tmp_path / "file").touch()
    process = run(source, "--store", tmp_path / "file")
    assert process.returncode == 1 and process.stderr.startswith("error 75: ")


def test_the_order_of_the_guide(source, tmp_path):
    text = (source / "docs/python.md").read_text()
    (program,) = re.findall("```python\n(.*?)```", text, re.DOTALL)
    process = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, cwd=tmp_path)
    assert (process.stderr, process.returncode) == ("", 0)
    assert process.stdout == "4QX17 206.5050\n[('', Decimal('206.5050'))]\n"
