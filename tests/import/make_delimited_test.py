"""Holds examples/make_delimited.py against the file that it made: the file's figures as a table again give the file.

    make_delimited_test.py ROOT
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1))
HEAD = "date,precipitation,temp_max,temp_min,wind,weather\n"


def script(*arguments):
    return subprocess.run([sys.executable, ROOT / "examples/make_delimited.py", *arguments], check=True,
                          capture_output=True).stdout


class MakeDelimitedTest(unittest.TestCase):
    def make(self, rows):
        with tempfile.TemporaryDirectory() as folder:
            table = pathlib.Path(folder, "table.csv")
            table.write_text(HEAD + "".join(rows), encoding="utf-8")
            return script(table)

    def test_a_row_becomes_a_line_with_its_pairs(self):
        self.assertEqual(self.make(["2012/01/03,0.80,11.7,-7.2,3.0,rain\n"]),
                         b"2012/01/03,SEATTLE,1,0.8,2,11.7,3,-7.2,4,3\r\n")

    def test_the_figures_of_the_example_give_the_example(self):
        example = (ROOT / "examples/seattle-weather.txt").read_bytes()
        lines = [line.split(",") for line in example.decode().split("\r\n") if line]
        self.assertEqual(len(lines), 1461)
        self.assertEqual(self.make([",".join([line[0], *line[3::2], "sun"]) + "\n" for line in lines]), example)


if __name__ == "__main__":
    unittest.main()
