"""A scratch web site, the distributions that are installed into it, and the tools that look at it.

Everything lies in a directory of its own below /tmp that other users may enter, since the web server
runs as the user that owns what the wizard installs. All defaults of the distributions point into it,
and only the loopback interface is used.
"""

import os
import re
import shutil
import signal
import socket
import subprocess
import time
import urllib.error
import urllib.request
from html.parser import HTMLParser
from pathlib import Path

import pytest
from dialogue import converse

ROOT = Path(__file__).resolve().parents[2]
ARTEFACTS = ROOT / "build" / "real"

# Enter throughout, where the program reads what nothing here sees it ask: more lines than it reads.
DEFAULTS = "\n" * 60

# Replies: no copy of the originals, and the distribution stays.
KEEP = {"original templates": "no", "temporary files": "no"}


def removal(site):
    """Replies: every part goes. The images directory is named: for some products a real one is offered."""
    return {
        "What do you want to do": "3",
        "CGI files from": ["yes", "yes"],
        "old graphics and wav": str(site.images),
        "may affect other": "yes",
        "Remove all user information": "yes",
        "Remove template files": "yes",
    }


# 3.2 has no welcome.tpl, so the installed one cannot be replaced.
GONE = [
    "Can't copy ./tpl/welcome.tpl: No such file or directory",
    "Can't copy ./tpl/welcome.tpl",
    "Can't do safe save",
]


def need(tool):
    """The path of a tool; without it the test is skipped and the tool is named."""
    path = shutil.which(tool, path=os.environ["PATH"] + ":/usr/sbin:/sbin")
    if not path:
        pytest.skip(f"{tool} cannot be had")
    return path


def run(*command, **options):
    """Runs a command to its end and gives its output; a failure shows what it printed."""
    result = subprocess.run(
        [str(word) for word in command],
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        timeout=options.pop("timeout", 120),
        **options,
    )
    assert result.returncode == 0, f"{command} gave {result.returncode}:\n{result.stdout}"
    return result.stdout


class Site:
    """A web site with cgi-bin, html and spool, for one product."""

    def __init__(self, place, product):
        self.place = place
        self.product = product
        self.directory = place / "site"
        product_file = (ROOT / "examples" / product / "product").read_text()
        self.images = self.directory / "html" / re.search(r"^images=(.*)$", product_file, re.M).group(1)

    def stage(self, version, *options):
        """Makes a distribution of the product whose defaults point into the site."""
        distribution = self.place / f"{self.product}-{version}"
        run(
            ROOT / "examples" / "stage", *options,
            "--site", self.directory, "--domain", "localhost",
            self.product, distribution, version,
        )  # fmt: skip
        return Distribution(distribution)


class Distribution:
    def __init__(self, directory):
        self.directory = directory

    def run_wizard(self, replies=None):
        """Gives the replies, and enter to every other question. Returns the transcript."""
        return converse(self.directory, replies or {})

    def run_with_lines(self, answers):
        """Feeds the answers, one a line, as a file of them does. Returns what was shown."""
        return run("./gxsetup", cwd=self.directory, input="".join(f"{answer}\n" for answer in answers))


def printed_url(transcript):
    """The URL that the wizard tells at the end."""
    found = re.search(r"^    (http://\S+\.cgi)", transcript, re.MULTILINE)
    assert found, transcript
    return found.group(1)


def errors_in(transcript):
    return re.findall(r"Error: (.*)", transcript)


def derived_images_url(transcript):
    """The relative URL that the wizard derives from the two directories and offers."""
    found = re.search(r"^Relative URL for HTML references to these images\n\[(.*?)\]", transcript, re.M)
    assert found, transcript
    return found.group(1)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def fetch(url):
    """Status, type and content of a URL on the loopback interface; status 0 when nothing answers."""
    opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
    try:
        with opener.open(url, timeout=20) as answer:
            return answer.status, answer.headers.get_content_type(), answer.read()
    except urllib.error.HTTPError as error:
        return error.code, error.headers.get_content_type(), error.read()
    except urllib.error.URLError:
        return 0, "", b""


class Server:
    """lighttpd on a free loopback port, as the owner of the installed program, for at most two minutes."""

    def __init__(self, site):
        self.site = site
        self.lighttpd = need("lighttpd")
        self.port = free_port()

    def __enter__(self):
        program = self.site.directory / "cgi-bin" / f"{self.site.product}.cgi"
        settings = self.site.place / "lighttpd.conf"
        settings.write_text(self.settings(program))
        self.process = subprocess.Popen(
            ["timeout", "120", self.lighttpd, "-D", "-f", settings], start_new_session=True
        )
        self.wait_until_it_answers()
        return self

    def __exit__(self, *_):
        os.killpg(self.process.pid, signal.SIGTERM)
        self.process.wait(10)

    def settings(self, program):
        directory = self.site.directory
        text = f"""
            server.bind = "127.0.0.1"
            server.port = {self.port}
            server.document-root = "{directory}/html"
            server.stat-cache-engine = "disable"
            server.modules = ("mod_access", "mod_alias", "mod_cgi")
            mimetype.assign = (".gif" => "image/gif", ".jpg" => "image/jpeg", ".wav" => "audio/x-wav",
                               ".js" => "text/javascript", ".html" => "text/html")
            alias.url = ("/cgi-bin/" => "{directory}/cgi-bin/")
            $HTTP["url"] =~ "^/cgi-bin/" {{
                cgi.assign = (".cgi" => "")
                url.access-deny = (".ini", ".new")
            }}
        """
        if os.getuid() == 0:
            text += f'server.username = "{program.owner()}"\nserver.groupname = "{program.group()}"\n'
        return text

    def wait_until_it_answers(self):
        end = time.monotonic() + 20
        while time.monotonic() < end:
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", self.port)) == 0:
                    return
            assert self.process.poll() is None, "lighttpd ended"
            time.sleep(0.05)
        raise AssertionError("lighttpd does not answer")

    def local(self, url):
        """The URL with its host replaced by this server's."""
        return re.sub(r"^http://[^/]*", f"http://127.0.0.1:{self.port}", url)

    def fetch(self, url):
        """Status, type and content of a URL, or of a path on this server."""
        if url.startswith("/"):
            url = "http://localhost" + url
        return fetch(self.local(url))


class ImageFinder(HTMLParser):
    def __init__(self):
        super().__init__()
        self.images = []

    def handle_starttag(self, tag, attributes):
        given = dict(attributes)
        if tag in ("img", "image") and given.get("src"):
            self.images.append(given["src"])
        if given.get("background"):
            self.images.append(given["background"])


def images_of(page):
    finder = ImageFinder()
    finder.feed(page)
    return sorted(set(finder.images))


def take_picture(url, picture, size="800,600"):
    """A picture of a page, by headless Chromium that reaches nothing but the loopback interface."""
    chromium = need("chromium")
    picture.parent.mkdir(parents=True, exist_ok=True)
    picture.unlink(missing_ok=True)
    command = [
        chromium, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
        "--disable-background-networking", "--disable-component-update", "--no-first-run",
        "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1",
        f"--window-size={size}", f"--screenshot={picture}", url,
    ]  # fmt: skip
    profile = picture.parent / ".profile"
    try:
        run(*command, f"--user-data-dir={profile}", timeout=90)
    finally:
        shutil.rmtree(profile, ignore_errors=True)
    assert picture.read_bytes().startswith(b"\x89PNG"), picture
    assert picture.stat().st_size > 4000, f"{picture} seems to be blank"
