# SPDX-License-Identifier: MIT
"""The programme guide, from the file that the service has loaded."""

from xmltv import Guide, as_text

PREVIOUS, PRESENT, NEXT = -1, 0, 1
ABSENT = 60000  # no such service or event


def check_texts(service, guide, findings):
    """Checks the first programme of every service, and all rated programmes. check_lists checks all programmes."""
    firsts = [programmes[0] for programmes in guide.services.values()]
    for one in firsts + [one for one in guide.all() if one["rating"] and one not in firsts]:
        number, event = int(one["service_id"]), one["event_id"]
        findings.same(f"event {event}", service.FindProgram(number, event), {"result": True, "program": as_text(one)})
        findings.same(f"rating of {event}", service.GetRating(event)["rating"], as_text(one["rating"]))
        findings.same(f"genres of {event}", service.GetGenre(event)["genre"], as_text(one["genres"]))
    findings.same("unknown event", service.FindProgram(next(iter(guide.services)), ABSENT)["program"], "")
    findings.same("rating of an unknown event", service.GetRating(ABSENT)["rating"], "")
    findings.same("genres of an unknown event", service.GetGenre(ABSENT)["genre"], "")


def check_lists(service, guide, findings):
    for number, programmes in guide.services.items():
        first = programmes[0]
        parts = [(first["start_time"], first["duration"]), (first["start_time"] + 1, first["duration"]),
                 (first["start_time"], 0)]
        for start, duration in [(0, 0xFFFFFFFF)] + (parts if number == next(iter(guide.services)) else []):
            expected = guide.within(number, start, duration)
            findings.same("size of a list", service.GetProgramListSize(number, start, duration)["size"], len(expected))
            findings.same("list", service.GetProgramList(number, start, duration)["list"], as_text(expected))
    findings.same("list of an unknown service", service.GetProgramList(ABSENT, 0, 1)["list"], "")


def check_single(service, guide, now, findings):
    everything = guide.all()
    with service.another_application() as without_list:
        for index in (0, len(everything) // 2, len(everything) - 1):
            findings.same(f"programme {index}", without_list.GetProgram(index)["program"], as_text(everything[index]))
        findings.same("programme past the end", without_list.GetProgram(len(everything))["program"], "")
    for number, programmes in guide.services.items():
        present = guide.within(number, now, 1)
        findings.same(f"present programme of {number}", service.GetPresentProgram(number)["program"],
                      as_text(present[0]) if present else "")
        for at, steps in ((0, (PREVIOUS, PRESENT)), (len(programmes) - 1, (PREVIOUS, NEXT))):
            for which in steps:
                one = programmes[at]
                beside = programmes[at + which] if 0 <= at + which < len(programmes) else None
                answer = service.GetProgram(number, one["event_id"], one["start_time"], one["duration"], which)
                findings.same(f"neighbour {which} of {one['event_id']}", answer["out"], as_text(beside))


def check_guide(service, path, names, now, findings):
    findings.same("a guide is loaded", service.ExistXmlForIPG(), {"result": True, "exist": True})
    guide = Guide(path, names)
    check_texts(service, guide, findings)
    check_lists(service, guide, findings)
    check_single(service, guide, now, findings)


def check_another(service, path, names, findings):
    """Loading a guide replaces the previous one, unless it cannot be loaded."""
    guide = Guide(path, names)
    findings.same("loading a guide", service.CloneUSBToTV(path), {"result": True, "done": True})
    for number in guide.services:
        findings.same("list of the new guide", service.GetProgramList(number, 0, 0xFFFFFFFF)["list"],
                      as_text(guide.within(number, 0, 0xFFFFFFFF)))
    findings.same("loading a missing file", service.CloneUSBToTV("/no/such/guide.xml"), {"result": True, "done": False})
    with service.another_application() as without_list:
        findings.same("the guide after a failed load", without_list.GetProgram(0)["program"], as_text(guide.all()[0]))
