"""The web servers' examples in the guide, each run as printed but for paths and ports."""

import http.client
import os
import shutil
import signal
import socket
import ssl
import subprocess
import tempfile
import time
from pathlib import Path

import pytest
from dialogue import converse
from guide import commands, example, put
from world import DEFAULTS, Site, errors_in, free_port, images_of, need, run

HOST = "mail.example.com"
GUIDE = "web-servers.md"
TO_USER = "groupadd --system nobody"


class Machine:
    """A private view of this machine with an /etc of its own, so that users and groups may be changed."""

    def __init__(self, place):
        self.process = subprocess.Popen([need("unshare"), "--mount", "sleep", "200"])
        while os.readlink("/proc/self/ns/mnt") == os.readlink(f"/proc/{self.process.pid}/ns/mnt"):
            assert self.process.poll() is None
            time.sleep(0.01)
        shutil.copytree("/etc", place / "etc", symlinks=True)
        self.run(f"mount --bind {place}/etc /etc")

    def inside(self, command):
        return [need("nsenter"), "--target", str(self.process.pid), "--mount", "sh", "-ec", command]

    def run(self, command, **options):
        return run(*self.inside(command), **options)

    def close(self):
        self.process.kill()
        self.process.wait()


@pytest.fixture
def machine(place):
    if os.getuid() != 0:
        pytest.skip("users and groups are root's to change")
    machine = Machine(place)
    yield machine
    machine.close()


def install(machine, place):
    """kestrel in a site whose paths stand for those of the guide."""
    site = Site(place, "kestrel")
    distribution = site.stage("3.1").directory
    transcript = machine.run(f"cd {distribution} && ./gxsetup", input=DEFAULTS)
    assert errors_in(transcript) == []
    for directory in (site.directory / "cgi-bin", site.images):
        for name in ("kestrel.new", "gxsetup.dat", "gxsetup.log"):
            shutil.copy(site.directory / "cgi-bin" / "kestrel.ini", directory / name)
            (directory / name).chmod(0o644)
    return site


class Server:
    """A web server with the guide's example, run as www-data."""

    def __init__(self, machine, site):
        self.machine, self.site = machine, site
        self.place = Path(tempfile.mkdtemp(dir=site.place))
        self.place.chmod(0o755)
        self.http, self.https = free_port(), free_port()
        self.certificate = self.place / "certificate.pem"
        self.key = self.place / "key.pem"
        run(
            need("openssl"), "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", f"/CN={HOST}",
            "-addext", f"subjectAltName=DNS:{HOST}", "-out", self.certificate, "-keyout", self.key,
        )  # fmt: skip
        self.processes = []

    def __enter__(self):
        (self.place / "example").write_text(self.example())
        (self.place / "settings").write_text(self.settings())
        try:
            self.start()
            self.wait_for(self.https)
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in self.processes:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGTERM)
            process.wait(10)

    def run(self, command):
        self.processes.append(
            subprocess.Popen(self.machine.inside(f"exec timeout 60 {command}"), start_new_session=True)
        )

    def wait_for(self, port):
        end = time.monotonic() + 20
        while time.monotonic() < end:
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", port)) == 0:
                    return
            assert all(process.poll() is None for process in self.processes), self.errors()
            time.sleep(0.05)
        raise AssertionError("the server does not answer")

    def errors(self):
        log = self.place / "error.log"
        return log.read_text() if log.exists() else "the server ended"

    def common_places(self):
        return {
            "/home/httpd": self.site.directory,
            f"/etc/ssl/certs/{HOST}.pem": self.certificate,
            f"/etc/ssl/private/{HOST}.key": self.key,
        }

    def get(self, path, secure=True):
        """Status, headers and content of a path on the host."""
        with socket.create_connection(
            ("127.0.0.1", self.https if secure else self.http), timeout=20
        ) as plain:
            connection = http.client.HTTPConnection(HOST)
            connection.sock = plain
            if secure:
                trusted = ssl.create_default_context(cafile=self.certificate)
                connection.sock = trusted.wrap_socket(plain, server_hostname=HOST)
            connection.request("GET", path, headers={"Connection": "close"})
            answer = connection.getresponse()
            return answer.status, answer.headers, answer.read()


class Lighttpd(Server):
    tools = ["lighttpd"]

    def example(self):
        return put(
            example(GUIDE, "lighttpd"), {**self.common_places(), '":443"': f'"127.0.0.1:{self.https}"'}
        )

    def settings(self):
        if not Path("/usr/lib/lighttpd/mod_openssl.so").exists():
            pytest.skip("lighttpd-mod-openssl cannot be had")
        return f"""
            server.modules = ("mod_indexfile", "mod_access", "mod_alias", "mod_redirect")
            server.document-root = "/var/empty"
            server.username = "www-data"
            server.groupname = "www-data"
            server.bind = "127.0.0.1"
            server.port = {self.http}
            mimetype.assign = (".gif" => "image/gif", ".jpg" => "image/jpeg", "" => "application/octet-stream")
            include "example"
        """

    def start(self):
        self.run(f"{need('lighttpd')} -D -f {self.place}/settings")


class Apache(Server):
    tools = ["apache2"]

    def example(self):
        places = {"*:80>": f"*:{self.http}>", "*:443>": f"*:{self.https}>"}
        return put(example(GUIDE, "apache"), {**self.common_places(), **places})

    def settings(self):
        enabled = ["mpm_event", "authz_core", "alias", "mime", *self.enabled()]
        modules = "".join(
            f"LoadModule {name}_module /usr/lib/apache2/modules/mod_{name}.so\n" for name in enabled
        )
        return (
            modules
            + f"""
            ServerRoot {self.place}
            ServerName localhost
            PidFile {self.place}/pid
            ErrorLog {self.place}/error.log
            ScriptSock {self.place}/cgid
            Mutex file:{self.place} default
            User www-data
            Group www-data
            Listen 127.0.0.1:{self.http}
            Listen 127.0.0.1:{self.https}
            TypesConfig /dev/null
            AddType image/gif .gif
            AddType image/jpeg .jpg
            <Directory />
                AllowOverride None
                Require all denied
            </Directory>
            Include example
        """
        )

    def enabled(self):
        """The modules that the guide enables."""
        line = [command for command in commands(GUIDE, "Apache") if command.startswith("a2enmod ")]
        return line[0].split()[1:]

    def start(self):
        self.run(f"{need('apache2')} -DFOREGROUND -f {self.place}/settings")


class Nginx(Server):
    tools = ["nginx", "fcgiwrap"]

    def example(self):
        places = {
            "listen 80;": f"listen 127.0.0.1:{self.http};",
            "listen 443 ssl;": f"listen 127.0.0.1:{self.https} ssl;",
            "/run/fcgiwrap.socket": f"{self.place}/run/socket",
        }
        return put(example(GUIDE, "nginx"), {**self.common_places(), **places})

    def settings(self):
        shutil.copy("/etc/nginx/fastcgi_params", self.place)
        return f"""
            daemon off;
            user www-data;
            pid {self.place}/pid;
            error_log {self.place}/error.log;
            events {{ }}
            http {{
                include /etc/nginx/mime.types;
                access_log off;
                include example;
            }}
        """

    def start(self):
        (self.place / "run").mkdir()
        shutil.chown(self.place / "run", "www-data")
        self.run(
            f"setpriv --reuid www-data --regid www-data --init-groups "
            f"{need('fcgiwrap')} -s unix:{self.place}/run/socket"
        )
        end = time.monotonic() + 20
        while not (self.place / "run" / "socket").exists() and time.monotonic() < end:
            time.sleep(0.05)
        self.run(f"{need('nginx')} -e {self.place}/error.log -c {self.place}/settings")


@pytest.mark.parametrize("kind", [Lighttpd, Apache, Nginx])
def test_the_example_serves_the_product_and_nothing_else(place, machine, kind):
    for tool in kind.tools:
        need(tool)
    group, member = commands(GUIDE, "The user")[:2]
    assert group == TO_USER
    machine.run(group)
    site = install(machine, place)
    page = "/cgi-bin/kestrel.cgi"

    with kind(machine, site) as server:
        assert server.get(page)[0] in (403, 500, 502), "www-data may run what belongs to nobody"
        assert server.get("/vlimg/kestrel.gif")[0] == 403

    machine.run(member)
    with kind(machine, site) as server:
        status, headers, _ = server.get(page + "?page=index", secure=False)
        assert (status, headers["Location"]) == (301, f"https://{HOST}{page}?page=index")

        status, _, content = server.get(page)
        assert status == 200
        assert b"Kestrel 3.1" in content
        images = images_of(content.decode())
        assert images
        for image in images:
            status, headers, _ = server.get(image)
            assert (status, headers.get_content_maintype()) == (200, "image"), image

        assert server.get(page + ".")[0] in (403, 404)
        for directory in ("/cgi-bin", "/vlimg"):
            for name in ("kestrel.new", "gxsetup.dat", "gxsetup.log"):
                assert server.get(f"{directory}/{name}")[0] == 403, f"{directory}/{name}"
        assert server.get("/cgi-bin/kestrel.ini")[0] == 403


def test_a_product_that_is_installed_already_is_handed_over(place, machine):
    site = install(machine, place)
    try_it = put(commands(GUIDE, "Try it")[0], {"/home/httpd": site.directory})
    assert subprocess.run(machine.inside(try_it), capture_output=True).returncode != 0
    for command in commands(GUIDE, "The user"):
        if "/home/httpd" in command:
            command = put(command, {"/home/httpd": site.directory, "/var/spool": site.directory / "spool"})
        machine.run(command)
    assert machine.run(try_it) == "Version: KESTREL v3.1\n"


def test_another_user_is_asked_for_only_where_there_is_no_nobody(place, machine):
    machine.run("sed -i '/^nobody:/d' /etc/passwd; sed -i 's/^passwd:.*/passwd: files/' /etc/nsswitch.conf")
    distribution = Site(place, "kestrel").stage("3.1").directory
    program, *words = machine.inside(f"cd {distribution} && ./gxsetup")
    shown = converse(None, {"What username": ["?", "www-data"]}, *words, program=program)
    assert "User nobody is not in the passwd file. \n" in shown
    assert "\nUser name " in shown
    assert (place / "site" / "cgi-bin" / "kestrel.cgi").owner() == "www-data"


def test_programs_of_the_product_are_run_as_their_owner(place, machine):
    site = install(machine, place)
    command = [line for line in commands("security.md", "What you must do") if "runuser" in line]
    assert machine.run(put(command[0], {"/home/httpd": site.directory})) == "Version: KESTREL v3.1\n"
