"""A headless Chromium, driven over its debugging pipe: pages, mouse, keys, pictures, and what it said on the console or asked
of the network."""

import base64
import json
import os
import select
import subprocess
import tempfile
import time
from pathlib import Path


class Chromium:
    """One browser with one page. A context manager; times in seconds, places in pixels of the window."""

    def __init__(self, width=1400, height=950):
        self.folder = tempfile.TemporaryDirectory()
        to_browser, self.write_end = os.pipe()
        self.read_end, from_browser = os.pipe()

        def hand_over():  # the browser reads file 3 and writes file 4
            first, second = os.dup(to_browser), os.dup(from_browser)
            os.dup2(first, 3)
            os.dup2(second, 4)

        self.process = subprocess.Popen(
            ["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--remote-debugging-pipe", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--hide-scrollbars", "--disable-dev-shm-usage",
             f"--user-data-dir={self.folder.name}", f"--window-size={width},{height}", "about:blank"],
            preexec_fn=hand_over, close_fds=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.buffer = b""
        self.number = 0
        self.session = None
        self.complaints = []  # of the console, and exceptions
        self.requests = []    # addresses asked for
        self.loaded = False
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(f"{domain}.enable")
        self.resize(width, height)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.close(self.write_end)
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        os.close(self.read_end)
        for _ in range(20):  # its last children may still write
            try:
                self.folder.cleanup()
                return
            except OSError:
                time.sleep(0.1)

    # Messages

    def call(self, method, timeout=120, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.write_end, json.dumps(message).encode() + b"\0")
        end = time.monotonic() + timeout
        while time.monotonic() < end:
            answer = self._next(end - time.monotonic())
            if answer is not None and answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]
        raise TimeoutError(method)

    def _next(self, timeout):
        while b"\0" not in self.buffer:
            if not select.select([self.read_end], [], [], max(0.0, timeout))[0]:
                return None
            piece = os.read(self.read_end, 1 << 20)
            if not piece:
                raise RuntimeError("the browser has gone")
            self.buffer += piece
        text, self.buffer = self.buffer.split(b"\0", 1)
        message = json.loads(text)
        self._note(message)
        return message

    def _note(self, message):
        method, told = message.get("method"), message.get("params", {})
        if method == "Runtime.exceptionThrown":
            self.complaints.append(told["exceptionDetails"].get("exception", {}).get("description", str(told)))
        elif method == "Runtime.consoleAPICalled" and told["type"] in ("error", "warning", "assert"):
            self.complaints.append(str([a.get("value") for a in told["args"]]))
        elif method == "Log.entryAdded" and told["entry"]["level"] in ("error", "warning"):
            self.complaints.append(told["entry"]["text"])
        elif method == "Network.requestWillBeSent":
            self.requests.append(told["request"]["url"])
        elif method == "Page.loadEventFired":
            self.loaded = True

    # Pages

    def resize(self, width, height, mobile=False):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=mobile)

    def dark(self, on=True):
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": "dark" if on else "light"}])

    def open(self, path):
        """Opens a file and returns the seconds until it was loaded."""
        self.complaints.clear()
        self.requests.clear()
        self.loaded = False
        start = time.monotonic()
        self.call("Page.navigate", url=Path(path).resolve().as_uri())
        while not self.loaded:
            if self._next(60) is None:
                raise TimeoutError(path)
        return time.monotonic() - start

    def run(self, script):
        """The value of a JavaScript expression, which may be a promise."""
        answer = self.call("Runtime.evaluate", expression=script, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(answer["exceptionDetails"]["exception"].get("description", script))
        return answer["result"].get("value")

    def wait(self, script, timeout=20):
        end = time.monotonic() + timeout
        while not self.run(script):
            if time.monotonic() > end:
                raise TimeoutError(script)
            time.sleep(0.05)

    def frames(self, n=2):
        """Waits until n frames were painted."""
        self.run(f"new Promise(done => {{ let n = {n}; const next = () => n-- > 0 ? requestAnimationFrame(next) : done(true); next(); }})")

    # People

    def mouse(self, kind, x, y, **more):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def click(self, x, y):
        self.mouse("mouseMoved", x, y)
        self.mouse("mousePressed", x, y, button="left", buttons=1, clickCount=1)
        self.mouse("mouseReleased", x, y, button="left", clickCount=1)
        self.frames()

    def click_on(self, selector):
        """Scrolls to an element and clicks in its middle."""
        self.run(f"document.querySelector({json.dumps(selector)}).scrollIntoView({{block: 'center', behavior: 'instant'}})")
        box = self.run(f"(() => {{ const b = document.querySelector({json.dumps(selector)}).getBoundingClientRect(); return [b.left + b.width / 2, b.top + b.height / 2]; }})()")
        self.click(*box)

    def type(self, text):
        self.call("Input.insertText", text=text)
        self.frames()

    def key(self, key):
        codes = {"Enter": 13, "Escape": 27, "ArrowLeft": 37, "ArrowUp": 38, "ArrowRight": 39, "ArrowDown": 40}
        more = {"text": "\r"} if key == "Enter" else {"text": key} if len(key) == 1 else {}
        code = codes.get(key, ord(key.upper()) if len(key) == 1 else 0)
        self.call("Input.dispatchKeyEvent", type="keyDown", key=key, windowsVirtualKeyCode=code, **more)
        self.call("Input.dispatchKeyEvent", type="keyUp", key=key, windowsVirtualKeyCode=code)
        self.frames()

    # Pictures

    def picture(self, path, whole=False):
        self.frames()
        answer = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=whole)
        Path(path).write_bytes(base64.b64decode(answer["data"]))

    def print(self, path):
        answer = self.call("Page.printToPDF", printBackground=True, preferCSSPageSize=True)
        Path(path).write_bytes(base64.b64decode(answer["data"]))
