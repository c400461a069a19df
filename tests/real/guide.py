"""The guides, read by the tests: their commands are run and their examples used as they are printed."""

import re

from world import ROOT

DOCS = ROOT / "docs"


def page(name):
    return (DOCS / name).read_text()


def section(name, heading):
    """The text below a heading, up to the next one of its level or above."""
    found = re.search(rf"^(#+) {re.escape(heading)}\n", page(name), re.M)
    assert found, f"{name} has no section {heading}"
    rest = page(name)[found.end() :]
    end = re.search(rf"^#{{1,{len(found.group(1))}}} ", rest, re.M)
    return rest[: end.start()] if end else rest


def example(name, language):
    """The one fenced block of a language."""
    found = re.findall(rf"^```{language}\n(.*?)^```$", page(name), re.M | re.S)
    assert len(found) == 1, f"{name}: {len(found)} blocks of {language}"
    return found[0]


def commands(name, heading, prompt="#"):
    """What is typed at a shell prompt in the section."""
    found = re.findall(rf"^ {{4,}}{re.escape(prompt)} (.+)$", section(name, heading), re.M)
    assert found, f"{name}: no command under {heading}"
    return found


def put(text, places):
    """The text with every path of the guides replaced by the test's own; each must occur."""
    for printed, own in places.items():
        assert printed in text, f"{printed} does not occur in:\n{text}"
        text = text.replace(printed, str(own))
    return text
