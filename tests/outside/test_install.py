# SPDX-License-Identifier: MIT
"""Proves that other projects can build against the installed files, and against the sources."""
import os
import shlex

import pytest

from conftest import BUILD, ROOT, require_tool

CONSUMER = ROOT / "tests/outside/install"
INSTALLED = """
    bin/corvane-wifi share/man/man1/corvane-wifi.1
    share/bash-completion/completions/corvane-wifi share/zsh/site-functions/_corvane-wifi
    share/fish/vendor_completions.d/corvane-wifi.fish share/corvane-wifi/schema/list.schema.json
    share/doc/corvane-wifi/examples/wifi-menu share/doc/corvane-wifi/LICENSE include/cvn/wifi.hpp
""".split()


@pytest.fixture
def succeed(run):
    """Runs a command, which may compile: gives its output."""
    def succeed(*words):
        ended = run(*words, env=os.environ, timeout=300)
        assert ended.returncode == 0, ended.stdout + ended.stderr
        return ended.stdout
    return succeed


@pytest.fixture
def prefix(folder, succeed):
    """Chosen only at the installation."""
    succeed("cmake", "--install", BUILD, "--prefix", folder / "chosen prefix")
    return folder / "chosen prefix"


@pytest.fixture
def check_cmake(folder, succeed):
    def check_cmake(build, *options):
        succeed("cmake", "-S", CONSUMER, "-B", folder / build, *options)
        succeed("cmake", "--build", folder / build, "--target", "consumer")
        assert succeed(folder / build / "consumer") == "Home\nCafe\n"
    return check_cmake


@pytest.fixture
def check_pkg_config(folder, succeed):
    def check_pkg_config(path):
        require_tool("pkg-config")
        flags = succeed("env", f"PKG_CONFIG_PATH={path}", "pkg-config", "--cflags", "--libs",
                        "cvn-wifi")
        # They are quoted for a shell, since there can be a blank in the prefix.
        succeed("c++", "-std=c++20", "-fPIC", "-o", folder / "consumer", CONSUMER / "consumer.cpp",
                *shlex.split(flags))
        assert succeed(folder / "consumer") == "Home\nCafe\n"
    return check_pkg_config


def test_installs_a_program_that_runs_and_its_files(prefix, succeed):
    assert [file for file in INSTALLED if not (prefix / file).is_file()] == []
    assert succeed(prefix / "bin/corvane-wifi", "--help").startswith("Usage: corvane-wifi")


def test_what_is_installed_can_be_used_by_cmake(prefix, check_cmake):
    check_cmake("build", f"-DCMAKE_PREFIX_PATH={prefix}")


def test_what_is_installed_can_be_used_by_pkg_config(prefix, check_pkg_config):
    [pc_file] = prefix.rglob("cvn-wifi.pc")
    check_pkg_config(pc_file.parent)


def test_a_project_around_the_sources_installs_only_what_it_asks_for(
        folder, succeed, check_cmake, check_pkg_config):
    check_cmake("around", f"-DCORVANE_SOURCE={ROOT}")
    succeed("cmake", "--install", folder / "around", "--prefix", folder / "own")
    assert [file for file in (folder / "own").rglob("*") if file.is_file()] == [
        folder / "own/bin/consumer"]

    def install_development(**directories):
        options = [f"-DCMAKE_INSTALL_{name}={path}" for name, path in directories.items()]
        succeed("cmake", "-DCORVANE_INSTALL=ON", *options, folder / "around")
        succeed("cmake", "--install", folder / "around", "--component", "development")

    # Some distributions choose absolute directories.
    install_development(LIBDIR=folder / "libraries", INCLUDEDIR=folder / "headers")
    check_cmake("absolute", f"-Dcvn-wifi_DIR={folder}/libraries/cmake/cvn-wifi")
    check_pkg_config(folder / "libraries/pkgconfig")
    install_development(LIBDIR="lib", PREFIX=folder / "prefix")
    check_pkg_config(folder / "prefix/lib/pkgconfig")
