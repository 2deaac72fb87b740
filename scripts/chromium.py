"""Drives a headless Chromium by the DevTools protocol over a pipe; for test-report.

    with Browser(profile_folder) as browser:
        page = browser.open("file:///…/case.html", width=1280, height=900)
        page.run("document.title")

The browser gets a profile of its own and no network that a test would need.
"""
import base64
import json
import os
import select
import shutil
import subprocess
import time


class Failure(Exception):
    pass


class Browser:
    def __init__(self, profile):
        program = shutil.which("chromium") or shutil.which("chromium-browser")
        if not program:
            raise Failure("no chromium")
        to_browser, self._write = os.pipe()
        self._read, from_browser = os.pipe()
        arguments = [program, "--headless=new", "--remote-debugging-pipe", "--no-first-run",
                     "--disable-gpu", "--disable-background-networking", "--disable-sync",
                     "--disable-component-update", "--disable-default-apps", "--mute-audio",
                     "--hide-scrollbars", "--user-data-dir=" + profile, "about:blank"]
        if os.geteuid() == 0:
            arguments.insert(1, "--no-sandbox")  # Chromium's sandbox refuses root

        def give_pipes():
            # The browser expects its commands at 3 and answers at 4.
            read, write = os.dup(to_browser), os.dup(from_browser)
            os.dup2(read, 3)
            os.dup2(write, 4)

        self._process = subprocess.Popen(
            arguments, preexec_fn=give_pipes, close_fds=False, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self._buffer = b""
        self._number = 0
        self.events = []

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        try:
            self._process.wait(10)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        os.close(self._write)
        os.close(self._read)

    def _message(self, deadline):
        while b"\0" not in self._buffer:
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self._read], [], [], left)[0]:
                raise Failure("the browser does not answer")
            data = os.read(self._read, 1 << 20)
            if not data:
                raise Failure("the browser ended")
            self._buffer += data
        text, self._buffer = self._buffer.split(b"\0", 1)
        return json.loads(text)

    def call(self, method, session=None, seconds=60, **parameters):
        self._number += 1
        command = {"id": self._number, "method": method, "params": parameters}
        if session:
            command["sessionId"] = session
        os.write(self._write, json.dumps(command).encode() + b"\0")
        deadline = time.monotonic() + seconds
        while True:
            message = self._message(deadline)
            if message.get("id") == self._number:
                if "error" in message:
                    raise Failure(f"{method}: {message['error']['message']}")
                return message["result"]
            self.events.append(message)

    def wait_for(self, method, session, seconds=60):
        deadline = time.monotonic() + seconds
        while True:
            for i, event in enumerate(self.events):
                if event.get("method") == method and event.get("sessionId") == session:
                    return self.events.pop(i)
            self.events.append(self._message(deadline))

    def open(self, url, width=1280, height=900, dark=False, phone=False):
        return Page(self, url, width, height, dark, phone)


class Page:
    def __init__(self, browser, url, width, height, dark, phone):
        self.browser = browser
        target = browser.call("Target.createTarget", url="about:blank")["targetId"]
        self.target = target
        self.session = browser.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=2 if phone else 1, mobile=phone)
        self.call("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.size = (width, height)
        start = time.monotonic()
        self.call("Page.navigate", url=url)
        browser.wait_for("Page.loadEventFired", self.session, 120)
        self.run("document.readyState")
        self.seconds = time.monotonic() - start

    def call(self, method, **parameters):
        return self.browser.call(method, self.session, **parameters)

    # The value of an expression, by way of JSON.
    def run(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise Failure(f"{expression}: {json.dumps(result['exceptionDetails'])[:400]}")
        return result["result"].get("value")

    def mouse(self, kind, x, y):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left", clickCount=1,
                  buttons=0 if kind == "mouseReleased" else 1)

    def click(self, x, y):
        self.mouse("mousePressed", x, y)
        self.mouse("mouseReleased", x, y)

    def press(self, key):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key,
                      windowsVirtualKeyCode={"Enter": 13, "Escape": 27, "ArrowLeft": 37,
                                             "ArrowUp": 38, "ArrowRight": 39, "ArrowDown": 40}[key])

    def picture(self, path, full=False, height=None, scale=1):
        clip = {"x": 0, "y": 0, "width": self.size[0], "height": height or self.size[1], "scale": scale}
        if full:
            clip["height"] = min(self.run("document.documentElement.scrollHeight"), 8000)
        data = self.call("Page.captureScreenshot", format="png", clip=clip,
                         captureBeyondViewport=True)["data"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))

    # What can be seen now.
    def view(self, path):
        data = self.call("Page.captureScreenshot", format="png")["data"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))

    # What the page said: console messages, exceptions, log entries.
    def said(self):
        self.run("0")
        return [event for event in self.browser.events if event.get("sessionId") == self.session and
                event.get("method") in ("Runtime.consoleAPICalled", "Runtime.exceptionThrown",
                                        "Log.entryAdded")]

    # The addresses that were asked for.
    def asked_for(self):
        self.run("0")
        return [event["params"]["request"]["url"] for event in self.browser.events
                if event.get("sessionId") == self.session and
                event.get("method") == "Network.requestWillBeSent"]

    def close(self):
        self.browser.call("Target.closeTarget", targetId=self.target)
