# SPDX-License-Identifier: MIT
"""Checks the requests that the service received, among them those whose effect no getter reports."""

BUILT_IN_HANDLE = "256"  # profile 1, id 0
WITHOUT_HANDLE = ("SetAppID",)
GUIDE = "IPGUTIL"
FUNCTIONS = 52  # the methods that subscribe and unsubscribe send the same one


def values(requests, function, key):
    """The arguments of the successful calls of `function`, in order."""
    return [one["request"].get(key) for one in requests
            if one["request"]["functionname"] == function and one["reply"].get("result_internal") == "1"]


def check_requests(requests, findings):
    functions = {one["request"]["functionname"] for one in requests}
    findings.same("number of requested functions", len(functions), FUNCTIONS)
    for one in requests:
        asked = one["request"]
        has_handle = one["endpoint"] != GUIDE and asked["functionname"] not in WITHOUT_HANDLE
        findings.same(f"handle of {asked['functionname']}", asked.get("handleID"),
                      BUILT_IN_HANDLE if has_handle else None)
    for function in ("MuteAudio", "MuteVideo"):
        findings.same(function, values(requests, function, "onoff"), ["1", "0"])
    findings.same("SetAppID", values(requests, "SetAppID", "AppID"), ["org.example.look"])
    for function in ("requestPESCB", "requestCaptionCB"):
        findings.same(function, values(requests, function, "on"), ["1", "0"])
