# SPDX-License-Identifier: GPL-3.0-or-later
"""What scripts/soak finds out about the files that are left. A fault is a line of text."""
import collections
import json
import os
import re
import subprocess

mark = "(caption by the stand-in model"


def captions(folder):
    """The caption of each image, or none, by exiftool."""
    listing = subprocess.run(["exiftool", "-json", "-XMP-dc:Description", "-IPTC:Caption-Abstract", folder,
                              "-ext", "xmp", "-ext", "JPG"], capture_output=True, check=False).stdout
    found = {}
    for entry in json.loads(listing or "[]"):
        found[os.path.basename(entry["SourceFile"])] = str(entry.get("Description", ""))
    return found


def caption_of(image, found):
    return found.get(image["name"] if image["name"].endswith(".JPG") else sidecar_of(image), "")


def sidecar_of(image):
    return image["name"][:-3] + "xmp"


def is_whole(image):
    """False if its upload to a server never ended."""
    return image.get("isWhole", True)


def is_waiting(image, folder, found):
    if not is_whole(image):
        return False
    if image["kept"]:
        return not os.path.exists(os.path.join(folder, image["name"]))
    return mark not in caption_of(image, found)


def caption_faults(images, folder):
    faults = []
    found = captions(folder)
    for image in images:
        caption = caption_of(image, found)
        if not is_whole(image):
            if mark in caption:
                faults.append(f"{image['name']}: captioned, although its upload never ended")
        elif image["kept"]:
            if caption != image["kept"]:
                faults.append(f"{image['name']}: a caption that was to stay became {caption!r}")
        elif caption.count(mark) != 1 or image["headline"] not in caption:
            faults.append(f"{image['name']}: its caption is {caption!r}")
    for name in os.listdir(folder):
        if name.endswith(".xmp"):
            with open(os.path.join(folder, name), encoding="utf-8") as sidecar:
                text = sidecar.read()
            texts = re.findall(r'xml:lang="x-default">([^<]*' + re.escape(mark) + ")", text)
            if len(texts) > 1 or len(re.findall("<dc:description", text)) > 1:
                faults.append(f"{name}: more than one caption")
    return faults


def left_behind(scratch, folder):
    faults = [f"{name}: left behind" for name in os.listdir(folder)
              if name.startswith(".") or ".ostrelle" in name or name.endswith("_original")]
    for path, _, names in os.walk(scratch):
        faults += [f"{path}/{name}: left behind" for name in names
                   if re.search(r"\.ostrelle-|\.lock\.|\.broken", name)]
    return faults


def manifest_faults(entries, folder):
    known = collections.Counter(entry["filename"] for entry in entries)
    faults = [f"{name}: {count} entries in the manifest" for name, count in known.items() if count > 1]
    for entry in entries:
        if not os.path.exists(os.path.join(folder, entry["filename"])):
            faults.append(f"{entry['filename']}: in the manifest only")
            continue
        status = os.stat(os.path.join(folder, entry["filename"]))
        seconds = status.st_mtime_ns / 1e9 - 978307200  # from 1970 to 2001
        if entry["fileSize"] != status.st_size or abs(entry["modificationDate"] - seconds) > 1e-6:
            faults.append(f"{entry['filename']}: not as the manifest has it")
    return faults


class Log:
    """What the program's log tells of all runs."""

    def __init__(self, scratch):
        writes = collections.Counter()
        self.transcriptions = self.failures = 0
        with open(scratch + "/data/com.tobinvasquel.OstrelleCaptions/Analyzer.log", errors="replace") as log:
            for line in log:
                if match := re.search(r"Wrote caption to XMP and touched mtime for (\S+)\.$"
                                      r"|Successfully wrote caption to JPEG embedded metadata for (\S+)\.$",
                                      line):
                    writes[match[1] or match[2]] += 1
                self.transcriptions += "Audio transcription" in line
                self.failures += "Auto mode failed" in line
        #: how often each image was written after the first time
        self.again = collections.Counter({name: count - 1 for name, count in writes.items() if count > 1})
