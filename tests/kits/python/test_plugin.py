# SPDX-License-Identifier: MIT
"""Tests the output of pytest, and the loading of the plugin."""
import os
import subprocess
import sys

from conftest import SAMPLES, SETTINGS


def test_failing_test_shows_the_conversation_as_a_table(run):
    result = run("""
def test_mute(television):
    television.lock("programme")
    television.fault("MuteAudio=result:0", count=1)
    ctl("mute", "audio", "off")
    television.expect("MuteAudio", onoff=True, within=0.1)
""")
    result.assert_outcomes(failed=1)
    result.stdout.re_match_lines([
        r"E .*ExpectationFailed: MuteAudio onoff=True did not come within 0.1 s: instead came MuteAudio onoff=False",
        r"test_failing.*: ExpectationFailed$",
        r"-+ Conversation with the television -+$",
        r"Time +From +What +Answer$",
        r"-+  -+  -+  -+$",
        r"\d\.\d{3} s  test +reset$",
        r"\d\.\d{3} s  test +lock programme$",
        r"\d\.\d{3} s  test +fault add MuteAudio=result:0 --count 1$",
        r"\d\.\d{3} s  :1\.\d+ +MuteAudio onoff=False +refused$",
        r"\d\.\d{3} s  test +expect MuteAudio onoff=True +not met$",
    ], consecutive=False)
    assert "zviptv/testing/" not in result.stdout.str()  # the traceback ends in the test


def test_passing_test_shows_no_table(run):
    result = run("def test_nothing(television): pass\n")
    result.assert_outcomes(passed=1)
    assert "Conversation" not in result.stdout.str()


def test_scenario_that_was_not_waited_for_fails_the_test(run):
    result = run("def test_forgotten(television): television.scenario('expect MuteAudio within 0.1')\n")
    result.assert_outcomes(passed=1, errors=1)
    result.stdout.fnmatch_lines(["*expect MuteAudio within 0.1: not seen within 0.1 s*"])


def test_failing_test_ends_its_scenario_at_once_and_steps_are_shown(run):
    result = run("""
import pytest, time
def test_failing(television):
    with television.scenario('expect MuteAudio within 100'):
        raise KeyError('mine')
def test_step(television):
    with television.scenario('0 pause'):
        pass
    while not television.properties['Paused']: pass
    raise KeyError(television.conversation)
def test_later(television):
    television.expect_no('MuteAudio', for_=0.1)
""")
    result.assert_outcomes(passed=1, failed=2)
    result.stdout.fnmatch_lines(["E*KeyError: 'mine'", "*scenario  runs scenario:1:1"])
    assert result.duration < 50


def test_one_simulator_serves_a_session(run):
    text = "".join(f"def test_{i}(television): print('bus', television.address)\n" for i in range(5))
    result = run(text, "-rP")
    result.assert_outcomes(passed=5)
    assert len({line for line in result.outlines if line.startswith("bus ")}) == 1


def test_every_xdist_worker_has_a_simulator(run):
    text = "".join(f"def test_{i}(television):\n    ctl('mute', 'audio', 'on')\n    print('bus', television.address)\n"
                   "    assert len(television.requests) == 1\n" for i in range(8))
    result = run(text, "-n", "2", "-rP", apart=True)
    result.assert_outcomes(passed=8)
    assert len({line for line in result.outlines if line.startswith("bus ")}) == 2


def test_simulator_that_died_is_reported(run):
    result = run("""
import os, signal
def test_kill(television):
    service = television.properties["ServicePid"]
    status = open(f"/proc/{service}/status").read()
    simulator = int(next(line.split()[1] for line in status.split("\\n") if line.startswith("PPid")))
    os.kill(simulator, signal.SIGKILL)
    television.lock("programme")
def test_next(television): pass
""")
    result.assert_outcomes(failed=1, errors=1)
    died = "*zviptv-sim has ended during the tests: it was killed by signal 9"
    result.stdout.fnmatch_lines([died, "*The command was: *zviptv-sim --ts *", died])


def test_simulator_that_is_not_in_path_is_reported(run, monkeypatch):
    monkeypatch.setenv("PATH", "/no/such/folder")
    result = run("def test_nothing(television): pass\n")
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines(["cannot start zviptv-sim: it is not in PATH; install the package zv-iptv-tools, "
                                 "or add the folder of zviptv-sim to PATH"])


def test_wrong_option_is_reported(run):
    result = run("def test_nothing(television): pass\n", settings=SETTINGS + "zviptv_options = --sped 3\n")
    result.assert_outcomes(errors=1)
    result.stdout.fnmatch_lines(["zviptv-sim did not start: it ended with exit status 2", "*--sped*",
                                 "The command was: *"])


def test_settings_reach_the_simulator(run):
    settings = (f"{SETTINGS}zviptv_guide = {SAMPLES}/sample.xml\n"
                "zviptv_options = --loop --time 1774735200 --lock-service\n")
    run("""
def test_settings(television):
    assert television.properties["ServiceLocked"]
    assert television.properties["Present"]["title"] == "Cellar Door"
    assert television.properties["Input"].endswith("sample.ts")
""", settings=settings).assert_outcomes(passed=1)


def test_plugin_is_loaded_by_entry_point_and_by_name(run, pytester):
    pytester.makeconftest('pytest_plugins = ["zviptv.testing"]')
    result = run("def test_nothing(television): pass\n", "--trace-config", apart=True)
    result.assert_outcomes(passed=1)
    result.stdout.fnmatch_lines(["*zviptv-*"])


def test_missing_gi_fails_only_tests_with_a_television(run, pytester):
    pytester.makeconftest("import sys\nsys.modules['gi'] = None\n")
    result = run("def test_with(television): pass\ndef test_without(): pass\n", apart=True)
    result.assert_outcomes(passed=1, errors=1)
    result.stdout.fnmatch_lines(["cannot load the Python module gi: install the package python3-gi*"])


def test_package_needs_nothing_compiled():
    subprocess.run([sys.executable, "-c", "import zviptv"], check=True)


def test_simulator_ends_with_the_tests(run):
    result = run("def test_pid(television): print('service', television.properties['ServicePid'])\n", "-rP")
    pid = next(line.split()[1] for line in result.outlines if line.startswith("service "))
    assert not os.path.exists(f"/proc/{pid}")
