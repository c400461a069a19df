"""What the wizard installs is run by a web server: first version, upgrade, removal."""

import subprocess
import time

import pytest

from world import (
    GONE, KEEP, ROOT, Server, Site, derived_images_url, errors_in, fetch,
    free_port, images_of, need, printed_url, removal, run, take_picture,
)  # fmt: skip


def see_page(server, url, title, images_url):
    """The page of the product, with all its images answering below the URL that the wizard derived."""
    status, kind, content = server.fetch(url)
    page = content.decode()
    assert (status, kind) == (200, "text/html"), page
    assert title in page
    assert "||" not in page, "a placeholder was not filled in"
    images = images_of(page)
    assert images
    for image in images:
        assert image.startswith(images_url + "/")
        status, kind, content = server.fetch(image)
        assert (status, kind.split("/")[0]) == (200, "image"), image
        assert content
    return images


def see_wml_page(server, url):
    status, kind, content = server.fetch(url)
    assert (status, kind) == (200, "text/vnd.wap.wml")
    assert b'<card id="inbox"' in content


@pytest.mark.parametrize(
    "product, title, with_wml, upgrade_errors",
    [
        ("kestrel", "Kestrel", False, GONE),
        ("tanager", "Tanager", True, []),
    ],
    ids=["kestrel", "tanager"],
)
def test_installs_upgrades_and_removes(place, product, title, with_wml, upgrade_errors):
    site = Site(place, product)
    options = ["--wml"] if with_wml else []
    old, new = site.stage("3.1", *options), site.stage("3.2", *options)

    transcript = old.run_wizard()
    assert errors_in(transcript) == []
    assert "\nInstallation successful.\n" in transcript
    url, images_url = printed_url(transcript), derived_images_url(transcript)
    wml_url = url.replace(product, "merlin")
    with Server(site) as server:
        images = see_page(server, url, f"{title} 3.1", images_url)
        if with_wml:
            see_wml_page(server, wml_url)
        else:
            assert server.fetch(wml_url)[0] == 404
        assert server.fetch(f"/cgi-bin/{product}.ini")[0] == 403

        transcript = new.run_wizard(KEEP)
        assert errors_in(transcript) == upgrade_errors
        assert "\nUpgrade successful.\n" in transcript
        assert printed_url(transcript) == url
        see_page(server, url, f"{title} 3.2", images_url)

        transcript = new.run_wizard(removal(site))
        print(transcript)
        assert "\nremove successful\n" in transcript
        assert server.fetch(url)[0] == 404
        assert server.fetch(wml_url)[0] == 404
        for image in images:
            assert server.fetch(image)[0] == 404


@pytest.mark.parametrize("product", ["kestrel", "tanager"])
def test_the_page_as_a_browser_shows_it(place, artefacts, product):
    site = Site(place, product)
    url = printed_url(site.stage("3.1").run_wizard())
    with Server(site) as server:
        take_picture(server.local(url), artefacts / f"{product}.png")


def test_the_demo_installs_the_product_and_says_that_it_builds():
    said = run(ROOT / "demo", "plover", stdin=subprocess.DEVNULL, timeout=300)
    assert said.startswith("Building the wizard; this takes a minute the first time ...\n")
    assert "\ninstall successful\n" in said
    assert "\nInstalled below " in said


def test_the_demo_serves_the_page_that_it_names(artefacts):
    need("lighttpd")
    port = free_port()
    said = artefacts / "demo.txt"
    with said.open("w") as output:
        demo = subprocess.Popen(
            ["timeout", "120", ROOT / "demo", "serve", "kestrel", str(port)],
            stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, cwd=ROOT,
        )  # fmt: skip
    try:
        url = f"http://localhost:{port}/cgi-bin/kestrel.cgi"
        end = time.monotonic() + 90
        while f"\nOpen {url}\n" not in said.read_text() and demo.poll() is None and time.monotonic() < end:
            time.sleep(0.1)
        if "may not enter" in said.read_text():
            pytest.skip(f"the web server's user may not enter {ROOT}")
        assert f"\nOpen {url}\n" in said.read_text(), said.read_text()
        status = 0
        while status == 0 and time.monotonic() < end:
            status, _, content = fetch(url.replace("localhost", "127.0.0.1"))
        assert status == 200
        assert b"Kestrel 3.1" in content
        assert demo.poll() is None
    finally:
        demo.terminate()
        demo.wait(10)
