#!/usr/bin/env python3
"""Turns a table of daily weather figures into a file for the delimited import (docs/formats.md, "Delimited import").

    make_delimited.py [TABLE] > seattle-weather.txt

TABLE is a comma-separated table with the head date,precipitation,temp_max,temp_min,wind,weather. Without it the one of
the Debian package python3-vega-datasets is read. A line is written for each day, account SEATTLE:

    datafield 1 precipitation in mm, 2 highest and 3 lowest temperature in degrees Celsius, 4 wind in m/s

The figures are observations of the National Oceanic and Atmospheric Administration of the United States at the airport
Seattle-Tacoma, 2012 to 2015. They are in the public domain (https://www.weather.gov/disclaimer).
"""

import csv
import sys

PACKAGED_TABLE = "/usr/lib/python3/dist-packages/vega_datasets/_data/seattle-weather.csv"
ACCOUNT = "SEATTLE"
DATAFIELDS = {1: "precipitation", 2: "temp_max", 3: "temp_min", 4: "wind"}


def line_of(row):
    """A row of the table as a line of the delimited form: year, month and day in one field, account, pairs."""
    pairs = (f"{number},{float(row[column]):g}" for number, column in DATAFIELDS.items())
    return ",".join([row["date"], ACCOUNT, *pairs])


def main(arguments):
    path = arguments[0] if arguments else PACKAGED_TABLE
    with open(path, newline="", encoding="utf-8") as table:
        for row in csv.DictReader(table):
            sys.stdout.write(line_of(row) + "\r\n")


if __name__ == "__main__":
    sys.stdout.reconfigure(newline="")
    main(sys.argv[1:])
