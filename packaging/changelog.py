#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The releases of CHANGELOG.md in other forms.

  changelog.py debian [--suffix SUFFIX]           a debian/changelog, to standard output
  changelog.py metainfo TEMPLATE [--homepage URL]  AppStream metainfo made from its template

A release is a heading "## 1.2.3 (2026-11-24)". What stands under "## Unreleased" is of the version in CMakeLists.txt.
Moments are those of SOURCE_DATE_EPOCH, where it is set, so that the same sources give the same files.
"""

import argparse
import datetime
import email.utils
import os
import pathlib
import re
import sys
from xml.sax.saxutils import escape

ROOT = pathlib.Path(__file__).resolve().parent.parent
PACKAGE = "ostrelle-captions"
SCREENSHOTS = [("panel-light.png", "The panel before a game"), ("panel-dark.png", "While images are captioned"),
               ("settings-light.png", "The settings")]


def moment(day=None):
    """Noon (UTC) of a day that is told, else the moment of the build."""
    if day:
        return datetime.datetime.fromisoformat(f"{day}T12:00:00+00:00")
    seconds = os.environ.get("SOURCE_DATE_EPOCH")
    utc = datetime.timezone.utc
    return datetime.datetime.fromtimestamp(int(seconds), utc) if seconds else datetime.datetime.now(utc)


def releases():
    """(version, day or None, [items]), the newest first."""
    project = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    version = re.search(r"project\(\w+ VERSION ([\d.]+)", project).group(1)
    found = []
    for line in (ROOT / "CHANGELOG.md").read_text(encoding="utf-8").splitlines():
        heading = re.fullmatch(r"## (?:(Unreleased)|([\d.]+) \((\d{4}-\d\d-\d\d)\))", line)
        if heading:
            found.append((heading[2] or version, heading[3], []))
        elif line.startswith("## "):
            sys.exit(f"CHANGELOG.md: \"{line}\" is no heading of a release.")
        elif found and line.startswith("- "):
            found[-1][2].append(line[2:])
        elif found and found[-1][2] and line.strip():
            found[-1][2][-1] += " " + line.strip()
    return found


def debian(suffix):
    version, day, items = releases()[0]
    lines = [f"{PACKAGE} ({version}{suffix}) {'unstable' if day else 'UNRELEASED'}; urgency=medium", ""]
    lines += ["  * " + (f"Release {version}." if day else f"Build before release {version}.") +
              f" CHANGELOG.md tells of its {len(items)} changes.", ""]
    control = (ROOT / "debian/control").read_text(encoding="utf-8")
    maintainer = re.search(r"^Maintainer: (.*)$", control, re.M).group(1)
    lines.append(f" -- {maintainer}  {email.utils.format_datetime(moment(day))}")
    return "\n".join(lines) + "\n"


def marked_up(item):
    return re.sub(r"`([^`]*)`", r"<code>\1</code>", escape(item))


def metainfo(template, homepage):
    parts = ["  <releases>"]
    for version, day, items in releases():
        kind = "stable" if day else "development"
        parts.append(f'    <release version="{version}" type="{kind}" date="{moment(day):%Y-%m-%d}">')
        parts.append("      <description>\n        <ul>")
        parts += [f"          <li>{marked_up(item)}</li>" for item in items]
        parts.append("        </ul>\n      </description>\n    </release>")
    parts.append("  </releases>")
    links = []
    if homepage:
        base = escape(homepage.rstrip("/"), {'"': "&quot;"})
        links = [f'  <url type="homepage">{base}/</url>', "  <screenshots>"]
        for index, (name, caption) in enumerate(SCREENSHOTS):
            kind = ' type="default"' if index == 0 else ""
            links.append(f"    <screenshot{kind}>\n      <caption>{caption}</caption>\n"
                         f"      <image>{base}/screenshots/{name}</image>\n    </screenshot>")
        links.append("  </screenshots>")
    text = pathlib.Path(template).read_text(encoding="utf-8")
    return text.replace("@RELEASES@", "\n".join(parts)).replace("@LINKS@\n", "".join(l + "\n" for l in links))


def main():
    parser = argparse.ArgumentParser()
    forms = parser.add_subparsers(dest="form", required=True)
    forms.add_parser("debian").add_argument("--suffix", default="")
    of_template = forms.add_parser("metainfo")
    of_template.add_argument("template")
    of_template.add_argument("--homepage", default="")
    arguments = parser.parse_args()
    if arguments.form == "debian":
        text = debian(arguments.suffix)
    else:
        text = metainfo(arguments.template, arguments.homepage)
    sys.stdout.buffer.write(text.encode("utf-8"))


main()
