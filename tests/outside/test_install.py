# SPDX-License-Identifier: MIT
"""Proves that the installed files are complete and that other projects can build against them."""
import re
import shlex
import shutil
import subprocess

import pytest

from conftest import BUILD, ROOT, broken_links, require_tool

CONSUMER = ROOT / "tests/outside/install"
INSTALLED = """
    bin/corvane-wifi share/man/man1/corvane-wifi.1
    share/bash-completion/completions/corvane-wifi share/zsh/site-functions/_corvane-wifi
    share/fish/vendor_completions.d/corvane-wifi.fish include/cvn/wifi.hpp
    share/doc/corvane-wifi/LICENSE
""".split()
PANEL = """
    bin/corvane-wifi-panel share/man/man1/corvane-wifi-panel.1
    share/applications/corvane-wifi-panel.desktop
    share/metainfo/invalid.corvane_wifi.panel.metainfo.xml
    share/icons/hicolor/scalable/apps/corvane-wifi-panel.svg
""".split()
FOLDERS = {"schema": "share/corvane-wifi/schema", "examples": "share/doc/corvane-wifi/examples",
           "docs": "share/doc/corvane-wifi/docs"}
VERSIONS = {"CHANGELOG.md": "## {} -", "man/corvane-wifi.1": "belongs to version {}.",
            "packaging/debian/changelog": "corvane-wifi ({}-",
            "panel/corvane-wifi-panel.metainfo.xml": 'release version="{}"'}


def succeed(*words):
    """Runs a command, which may compile: gives its output."""
    ended = subprocess.run(words, text=True, stdin=subprocess.DEVNULL, capture_output=True,
                           timeout=300)
    assert ended.returncode == 0, ended.stdout + ended.stderr
    return ended.stdout


@pytest.fixture
def prefix(folder):
    """Chosen only at the installation."""
    succeed("cmake", "--install", BUILD, "--prefix", folder / "chosen prefix")
    return folder / "chosen prefix"


def check_cmake(build, *options):
    succeed("cmake", "-S", CONSUMER, "-B", build, *options)
    succeed("cmake", "--build", build, "--target", "consumer")
    assert succeed(build / "consumer") == "Home\nCafe\n"


def check_pkg_config(folder, path):
    require_tool("pkg-config")
    flags = succeed("env", f"PKG_CONFIG_PATH={path}", "pkg-config", "--cflags", "--libs",
                    "cvn-wifi")
    # They are quoted for a shell, since there can be a blank in the prefix.
    succeed("c++", "-std=c++20", "-fPIC", "-o", folder / "consumer", CONSUMER / "consumer.cpp",
            *shlex.split(flags))
    assert succeed(folder / "consumer") == "Home\nCafe\n"


def test_installs_a_program_that_runs_and_its_files(prefix):
    wanted = INSTALLED + (PANEL if (BUILD / "panel/corvane-wifi-panel").exists() else [])
    assert [file for file in wanted if not (prefix / file).is_file()] == []
    assert succeed(prefix / "bin/corvane-wifi", "--help").startswith("Usage: corvane-wifi")


def test_installs_every_schema_example_and_document(prefix):
    for source, installed in FOLDERS.items():
        names = {path.name for path in (ROOT / source).iterdir() if not path.name.endswith("~")}
        assert {path.name for path in (prefix / installed).iterdir()} == names


def test_links_of_the_installed_documents_lead_to_files(prefix):
    assert broken_links((prefix / "share/doc/corvane-wifi").rglob("*.md")) == []


def test_permissions_and_stray_files_of_the_checkout_do_not_matter(folder):
    source = folder / "checkout"
    shutil.copytree(ROOT, source, ignore=shutil.ignore_patterns("build", ".git"))
    for path in [*source.rglob("*")]:
        path.chmod(0o700 if path.is_dir() else 0o600 | path.stat().st_mode & 0o100)
        if path.is_file():
            path.with_name(path.name + "~").touch()
    succeed("cmake", "-S", source, "-B", folder / "build", "-DCORVANE_BUILD_PANEL=OFF")
    succeed("cmake", "--build", folder / "build", "--target", "corvane-wifi")
    for component in "program", "documentation":
        succeed("cmake", "--install", folder / "build", "--prefix", folder / "prefix",
                "--component", component)
    paths = [*(folder / "prefix").rglob("*")]
    assert [path for path in paths if path.name.endswith("~")] == []
    modes = {path: path.stat().st_mode & 0o777 for path in paths}
    programs = {"corvane-wifi", "wifi-menu", "status-bar"}
    wrong = {path: oct(mode) for path, mode in modes.items() if mode != (
        0o755 if path.is_dir() or path.name in programs and path.parent.name in (
            "bin", "examples") else 0o644)}
    assert wrong == {}


def test_what_is_installed_can_be_used_by_cmake(prefix, folder):
    check_cmake(folder / "build", f"-DCMAKE_PREFIX_PATH={prefix}")


def test_what_is_installed_can_be_used_by_pkg_config(prefix, folder):
    [pc_file] = prefix.rglob("cvn-wifi.pc")
    check_pkg_config(folder, pc_file.parent)


def test_a_project_around_the_sources_installs_only_what_it_asks_for(folder):
    check_cmake(folder / "around", f"-DCORVANE_SOURCE={ROOT}")
    succeed("cmake", "--install", folder / "around", "--prefix", folder / "own")
    assert [file for file in (folder / "own").rglob("*") if file.is_file()] == [
        folder / "own/bin/consumer"]

    def install_development(**directories):
        options = [f"-DCMAKE_INSTALL_{name}={path}" for name, path in directories.items()]
        succeed("cmake", "-DCORVANE_INSTALL=ON", *options, folder / "around")
        succeed("cmake", "--install", folder / "around", "--component", "development")

    # Some distributions choose absolute directories.
    install_development(LIBDIR=folder / "libraries", INCLUDEDIR=folder / "headers")
    check_cmake(folder / "absolute", f"-Dcvn-wifi_DIR={folder}/libraries/cmake/cvn-wifi")
    check_pkg_config(folder, folder / "libraries/pkgconfig")
    install_development(LIBDIR="lib", PREFIX=folder / "prefix")
    check_pkg_config(folder, folder / "prefix/lib/pkgconfig")


def test_files_of_a_release_have_the_version_of_the_build():
    [version] = re.findall(r"VERSION ([\d.]+) LANG", (ROOT / "CMakeLists.txt").read_text())
    assert [name for name, words in VERSIONS.items()
            if words.format(version) not in (ROOT / name).read_text()] == []
