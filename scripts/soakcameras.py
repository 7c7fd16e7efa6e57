# SPDX-License-Identifier: GPL-3.0-or-later
"""The FTP server of scripts/soak, which is killed now and then, and the cameras that upload to it."""
import ftplib
import json
import os
import random
import re
import subprocess
import sys
import threading
import time

import soakchecks

number_of_cameras = 3
most_images_a_minute = 20  # of all cameras, more than they ever upload


class Server:
    """Keeps its port and its folder."""

    def __init__(self, root, folder):
        self.command = [root + "/standins/ftp-server", folder]
        self.port = 0
        self.kills = 0
        self.start()

    def start(self):
        self.process = subprocess.Popen([*self.command, "--port", str(self.port)], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE)
        self.port = int(self.process.stdout.readline())

    def end(self):
        self.process.kill()
        self.process.wait()

    def kill_for(self, seconds):
        self.end()
        self.kills += 1
        time.sleep(seconds)
        self.start()


class Camera(threading.Thread):
    """Uploads its card in pieces and with pauses, which may be longer than anybody waits. One upload in ten is
    broken off, at random or shortly before its end, and begun again after other images, or never."""

    def __init__(self, card, images, server, end, seed):
        super().__init__(daemon=True)
        self.card = card
        self.images = images
        self.server = server
        self.end = end
        self.random = random.Random(seed)
        self.begun = []
        self.hasEnded = False
        self.uploads = self.breaks = self.pauses = self.failures = 0

    def chance(self, percent):
        return self.random.randrange(100) < percent

    def run(self):
        images = iter(self.images)
        broken = []
        while broken or time.monotonic() < self.end:
            if broken and (time.monotonic() >= self.end or self.chance(30)):
                image = broken.pop(0)
            else:
                image = next(images)
                self.begin(image)
            if not self.upload_all(image):
                broken.append(image)
            if not self.chance(25):  # else a burst
                time.sleep(self.random.uniform(5, 30))
        self.hasEnded = True

    def begin(self, image):
        name, sidecar = image["name"], soakchecks.sidecar_of(image)
        image["isWhole"] = False
        image["isSidecarFirst"] = bool(image["kept"]) or self.chance(50)
        names = [sidecar, name] if image["isSidecarFirst"] else [name, sidecar]
        image["toUpload"] = [file for file in [name[:-3] + "WAV", *names]
                             if os.path.exists(os.path.join(self.card, file))]
        if not name.endswith(".JPG") and not image["isSidecarFirst"]:
            image["headline"] = ""  # it may be captioned without
        self.begun.append(image)

    def upload_all(self, image):
        """False if an upload was broken off and is to be begun again."""
        while image["toUpload"]:
            name = image["toUpload"][0]
            with open(os.path.join(self.card, name), "rb") as file:
                data = file.read()
            stop = self.breaking_point(len(data)) if self.chance(10) else len(data)
            while not self.upload(name, data, stop):
                self.failures += 1
                time.sleep(2)
            if stop < len(data):
                self.breaks += 1
                return name == image["name"] and self.chance(20)  # never begun again
            self.uploads += 1
            image["isWhole"] = image["isWhole"] or name == image["name"]
            image["toUpload"].pop(0)
        return True

    def breaking_point(self, size):
        return size - self.random.randint(1, min(2000, size)) if self.chance(25) else self.random.randrange(size)

    def upload(self, name, data, stop):
        """False if the server went away."""
        pause = self.random.choices([0, self.random.uniform(1, 4), self.random.uniform(8, 20)], [75, 20, 5])[0]
        pause_at = self.random.randrange(stop + 1)
        piece = 32 << 10
        try:
            ftp = ftplib.FTP(timeout=30)
            ftp.connect("127.0.0.1", self.server.port)
            ftp.login("camera", "secret")
            ftp.voidcmd("TYPE I")
            channel = ftp.transfercmd("STOR " + name)
            for begin in range(0, stop, piece):
                end = min(begin + piece, stop)
                if begin <= pause_at < end and pause:
                    channel.sendall(data[begin:pause_at])
                    begin = pause_at
                    self.pauses += pause > 4
                    time.sleep(pause)
                channel.sendall(data[begin:end])
                time.sleep(0.03)  # about a megabyte a second
            channel.close()
            if stop == len(data):
                ftp.voidresp()
            ftp.close()
            return True
        except (OSError, EOFError, ftplib.Error):
            return False


def picture_of(jpeg):
    """All from the start of the scan; nothing if there is none."""
    at = 2
    while at + 4 <= len(jpeg) and jpeg[at + 1] != 0xDA:
        at += 2 + int.from_bytes(jpeg[at + 2:at + 4], "big")
    return jpeg[at:]


def without_caption(xmp):
    return re.sub(rb"<dc:description>.*</dc:description>", b"", xmp)


class Cameras:
    """The source of the images: all cameras and their server."""

    def __init__(self, root, programs, scratch, folder, seconds, seed):
        self.card = scratch + "/card"
        self.folder = folder
        self.trash = scratch + "/data/Trash/files"
        uploaded = scratch + "/server"
        os.mkdir(self.card)
        os.mkdir(uploaded)
        count = int(seconds / 60 * most_images_a_minute) + number_of_cameras
        lines = subprocess.run([programs + "ostrelle-soak-writer", "--card", self.card, str(count), seed],
                               check=True, capture_output=True).stdout
        shots = [json.loads(line) for line in lines.splitlines()]
        self.server = Server(root, uploaded)
        self.arguments = ["--server", f"ftp://camera@127.0.0.1:{self.server.port}/", "--into", folder,
                          "--password-stdin", "--keep"]
        end = time.monotonic() + seconds
        self.cameras = [Camera(self.card, shots[number::number_of_cameras], self.server, end, f"{seed} {number}")
                        for number in range(number_of_cameras)]
        for camera in self.cameras:
            camera.start()
        self.next_kill = time.monotonic() + 90  # not together with the program

    def is_writing(self):
        if time.monotonic() >= self.next_kill:
            self.server.kill_for(3)
            self.next_kill = time.monotonic() + 120
        if any(not camera.is_alive() and not camera.hasEnded for camera in self.cameras):
            sys.exit("A camera failed.")
        return any(camera.is_alive() for camera in self.cameras)

    def images(self):
        return [image for camera in self.cameras for image in list(camera.begun)]

    def end(self):
        self.server.end()

    def read(self, folder, name):
        try:
            with open(os.path.join(folder, name), "rb") as file:
                return file.read()
        except FileNotFoundError:
            return b""

    def faults(self, entries):
        faults = []
        images = self.images()
        for image in images:
            if image["isWhole"]:
                faults += self.faults_of(image)
        known = {entry["filename"] for entry in entries}
        faults += [f"{image['name']}: in the manifest, although its upload never ended" for image in images
                   if not image["isWhole"] and image["name"] in known]
        names = {name for image in images for name in (image["name"], soakchecks.sidecar_of(image))}
        faults += [f"{name}: not an image, and no sidecar of one" for name in os.listdir(self.folder)
                   if name not in names]
        trash = os.listdir(self.trash) if os.path.isdir(self.trash) else []
        return faults + [f"{name}: in the trash" for name in trash]

    def faults_of(self, image):
        name, sidecar = image["name"], soakchecks.sidecar_of(image)
        sent, came = self.read(self.card, name), self.read(self.folder, name)
        if not came:
            return [f"{name}: not fetched"]
        faults = []
        if name.endswith(".JPG") and not image["kept"]:
            sent, came = picture_of(sent), picture_of(came)
        if sent != came:
            faults.append(f"{name}: not as the camera has it, {len(came)} bytes instead of {len(sent)}")
        sent, came = self.read(self.card, sidecar), self.read(self.folder, sidecar)
        if sent and image["isSidecarFirst"] and without_caption(sent) != without_caption(came):
            faults.append(f"{sidecar}: more was changed than the caption")
        return faults

    def words(self):
        def total(name):
            return sum(getattr(camera, name) for camera in self.cameras)
        halves = sum(not image["isWhole"] for image in self.images())
        return (f"{total('uploads')} uploads, {total('breaks')} broken off, {total('pauses')} long pauses, "
                f"{total('failures')} failed with the server, which was killed {self.server.kills} times; "
                f"{halves} images never whole")
