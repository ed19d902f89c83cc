# SPDX-License-Identifier: MIT
"""Proves that the panel has all its texts in each of its languages."""
import re
import subprocess
from xml.etree import ElementTree

import pytest

from conftest import LIMIT, ROOT, require_tool

PANEL = ROOT / "panel"
LANGUAGES = "ar", "de", "es", "fr", "zh_Hans"
LUPDATE = "/usr/lib/qt6/bin/lupdate"


def translations(path):
    """From the context and the text in English to the element that has the translation."""
    return {(context.findtext("name"), message.findtext("source")): message.find("translation")
            for context in ElementTree.parse(path).iter("context")
            for message in context.iter("message")}


def translation_file(language):
    return PANEL / f"translations/panel_{language}.ts"


def placeholders(text):
    return sorted(re.findall("%[0-9]", text))


def test_there_is_a_file_for_each_language_and_no_other():
    files = (PANEL / "translations").iterdir()
    assert sorted(files) == sorted(map(translation_file, LANGUAGES))
    for language in LANGUAGES:
        root = ElementTree.parse(translation_file(language)).getroot()
        assert root.get("language") == language


@pytest.mark.parametrize("language", LANGUAGES)
def test_every_text_is_translated_with_its_placeholders(language):
    for (context, text), translation in translations(translation_file(language)).items():
        where = f"{context}: {text}"
        assert translation.get("type") is None, where
        assert translation.text and translation.text.strip(), where
        assert placeholders(translation.text) == placeholders(text), where


@pytest.mark.parametrize("language", LANGUAGES)
def test_the_texts_are_those_of_the_panel(language, folder):
    require_tool(LUPDATE)
    sources = [*PANEL.glob("*.qml"), *PANEL.glob("*.cpp")]
    subprocess.run([LUPDATE, "-silent", *sources, "-ts", folder / "now.ts"], check=True,
                   timeout=LIMIT)
    assert set(translations(translation_file(language))) == set(translations(folder / "now.ts"))
