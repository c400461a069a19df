"""A terminal of its own, in tmux, in which a shell runs; what it shows is read back as text."""

import html
import subprocess
import time

from world import need, run, take_picture


class Terminal:
    def __init__(self, place, directory, columns=80, lines=24):
        self.asked = 0
        self.tmux = [need("tmux"), "-S", str(place / "tmux"), "-f", "/dev/null"]
        self.start = [
            "new-session", "-d", "-x", str(columns), "-y", str(lines), "-c", str(directory),
            "env -i PATH=/usr/bin:/bin TERM=screen LC_ALL=C.UTF-8 PS1='shell> ' sh",
        ]  # fmt: skip

    def __enter__(self):
        self.do("-u", *self.start)
        self.do("set-option", "-g", "status", "off")
        self.wait_for("shell> ")
        return self

    def __exit__(self, *_):
        subprocess.run([*self.tmux, "kill-server"], check=False, timeout=20)

    def do(self, *command):
        return run(*self.tmux, *command, timeout=20)

    def type(self, text):
        """Types a line; an empty text is the enter key alone."""
        if text:
            self.do("send-keys", "-l", text)
        self.do("send-keys", "Enter")

    def press(self, key):
        self.do("send-keys", key)

    def resize(self, columns, lines):
        self.do("resize-window", "-x", str(columns), "-y", str(lines))

    def screen(self):
        """The lines on the screen and above it, joined where the terminal wrapped them."""
        return self.do("capture-pane", "-p", "-J", "-S", "-2000").rstrip()

    def wait_for(self, text):
        """Waits until the screen ends with the text, as it does at a prompt."""
        end = time.monotonic() + 20
        while time.monotonic() < end:
            shown = self.screen()
            if shown.endswith(text.rstrip()):
                return shown
            time.sleep(0.05)
        raise AssertionError(f"no {text!r} at the end of:\n{shown}")

    def ask_shell(self, command):
        """Runs a command in the shell and gives what it printed."""
        self.asked += 1
        end = f"done {self.asked}"
        self.type(f"{command}; echo {end}")
        shown = self.wait_for(f"\n{end}\nshell> ")
        return shown.rsplit(f"; echo {end}\n", 1)[1].rsplit(end, 1)[0].strip()

    def start_wizard(self):
        self.type("./gxsetup")
        return self.wait_for("What do you want to do [1]? ")

    def take_picture(self, picture):
        """A picture of the screen as it is."""
        page = picture.with_suffix(".html")
        screen = self.do("capture-pane", "-p")
        page.write_text(PAGE.format(html.escape(screen)))
        take_picture(page.as_uri(), picture, f"760,{21 * screen.count(chr(10)) + 24}")
        page.unlink()


PAGE = """<!doctype html><meta charset="utf-8">
<style>body {{ margin: 0; background: #1d2021; color: #d5d0c0 }}
pre {{ margin: 12px 18px; font: 15px/21px "DejaVu Sans Mono", monospace }}</style>
<pre>{}</pre>"""
