# SPDX-License-Identifier: MIT
"""The parental lock, for a programme rated above the limit on a service that is locked."""

LOCKED, PROGRAMME, SERVICE, ALL = range(4)


def check_lock(service, age, findings):
    def state():
        programme, whole = service.GetRatingLockState(), service.FlagServiceLocked()
        findings.same("lock queries", (programme["result"], whole["result"]), (True, True))
        return programme["locked"], whole["locked"]

    findings.same("ratings", service.GetRatingInfo(),
                  {"result": True, "ratings": [{"region": 0, "dimension": 0, "value": age}]})
    findings.same("locked at first", state(), (True, True))
    findings.same("PIN", service.UnMuteByRatingPin(), {"result": True})
    findings.same("after the PIN", state(), (False, True))
    findings.same("PIN again", service.UnMuteByRatingPin(), {"result": False})
    for lock, expected in ((LOCKED, (True, True)), (PROGRAMME, (False, True)), (SERVICE, (False, False)),
                           (ALL, (False, False)), (LOCKED, (True, True))):
        findings.same(f"unlocking {lock}", service.SetUnlockedInfo(lock), {"result": True})
        findings.same(f"after unlocking {lock}", state(), expected)
    findings.same("unlocking an unknown lock", service.SetUnlockedInfo(ALL + 1), {"result": False})
    findings.same("factory mode", service.SetUnlockedInfoWhenFactoryMode(True), {"result": True})
    findings.same("in factory mode", state(), (False, False))
    findings.same("factory mode off", service.SetUnlockedInfoWhenFactoryMode(False), {"result": True})
    findings.same("after factory mode", state(), (True, True))
