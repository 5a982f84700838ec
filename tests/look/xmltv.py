# SPDX-License-Identifier: MIT
"""An XMLTV file, read as docs/reference/guide.md says, with the standard library's XML reader and calendar."""

import json
import re
import xml.etree.ElementTree as ElementTree
from datetime import datetime, timedelta, timezone

HOURS = {"UTC": 0, "GMT": 0, "UT": 0, "Z": 0, "WET": 0, "WEST": 1, "BST": 1, "CET": 1, "MEZ": 1, "CEST": 2, "MESZ": 2,
         "EET": 2, "EEST": 3, "MSK": 3}
AGES = {"G": 0, "U": 0, "Uc": 0, "AL": 0, "TV-G": 0, "TV-Y": 0, "R": 17, "TV-MA": 17, "NC-17": 18}
LAST_TAKES = 1800


def seconds(text):
    digits, zone = re.fullmatch(r"(\d+)\s*(\S*)", text.strip()).groups()
    moment = datetime.strptime(digits.ljust(14, "0"), "%Y%m%d%H%M%S").replace(tzinfo=timezone.utc)
    offset = re.fullmatch(r"([+-])(\d\d):?(\d\d)?", zone)
    if offset:
        sign, hours, minutes = offset.groups()
        away = timedelta(hours=int(hours), minutes=int(minutes or 0)) * (1 if sign == "+" else -1)
    else:
        away = timedelta(hours=HOURS[zone.upper()] if zone else 0)
    return int((moment - away).timestamp())


def text_of(element):
    return " ".join((element.text or "").split())


def minimum_age(value):
    if value in AGES:
        return AGES[value]
    numbers = [int(number) for number in re.findall(r"(?<!\d)\d{1,2}(?!\d)", value) if int(number) <= 21]
    return numbers[0] if numbers else None


def rating(element):
    found = [{"system": one.get("system", ""), "value": text_of(one.find("value"))} for one in element.iter("rating")]
    for one in found:
        one["minimum_age"] = minimum_age(one["value"])
    ages = [-1 if one["minimum_age"] is None else one["minimum_age"] for one in found]
    return found[ages.index(max(ages))] if found else None


def texts(element):
    """Title, subtitle, description and genres by language, in the order in which the languages appear."""
    languages = {}
    for tag, name in (("title", "title"), ("sub-title", "subtitle"), ("desc", "description"), ("category", "genres")):
        for one in element.iter(tag):
            found = languages.setdefault(one.get("lang", ""), {"title": "", "subtitle": "", "description": "",
                                                               "genres": []})
            if tag != "category":
                found[name] = found[name] or text_of(one)
            elif text_of(one) not in found["genres"]:
                found["genres"].append(text_of(one))
    return languages


def programme(element, number, service, channel):
    languages = texts(element)
    title = element.find("title")
    language = title.get("lang", "") if title is not None else next(iter(languages), "")
    main = dict(languages.pop(language, {"title": "", "subtitle": "", "description": "", "genres": []}))
    for other in languages.values():
        for name, value in main.items():
            main[name] = value or other[name]
    icon, episode = element.find("icon"), element.find("episode-num")
    return {"service_id": str(service), "event_id": number, "start_time": seconds(element.get("start")),
            "stop": seconds(element.get("stop")) if element.get("stop") else None, "channel": channel,
            **main, "language": language, "rating": rating(element),
            "icon": "" if icon is None else icon.get("src", ""), "episode": "" if episode is None else text_of(episode),
            "translations": [{"language": name, **found} for name, found in languages.items()]}


def service_numbers(root, names):
    """The service numbers and the names of the channels, by their ids.

    The first rule that gives an unused number applies: the service of the stream with the channel's name, the number at
    the start of the id, a numeric display-name, the next unused number.
    """
    channels = {one.get("id"): [text_of(name) for name in one.iter("display-name")] for one in root.iter("channel")}
    known = {name: number for number, name in names.items() if name}
    given = {}
    rules = (lambda _, shown: [known[name] for name in shown if name in known],
             lambda own, _: [int(number) for number in re.findall(r"^(\d+)(?:\.|$)", own)],
             lambda _, shown: [int(name) for name in shown if name.isdigit()])
    for rule in rules:
        for own, shown in channels.items():
            wanted = rule(own, shown)
            if own not in given and wanted and wanted[0] not in given.values():
                given[own] = wanted[0]
    for own in channels:
        given.setdefault(own, next(number for number in range(1, 1 << 16) if number not in given.values()))
    return given, {own: shown[0] if shown else "" for own, shown in channels.items()}


class Guide:
    """The programmes of every service in the order of their start."""

    def __init__(self, path, names):
        root = ElementTree.parse(path).getroot()
        numbers, shown = service_numbers(root, names)
        self.services = {number: [] for number in sorted(numbers.values())}
        for number, element in enumerate(root.iter("programme"), 1):
            channel = element.get("channel")
            self.services[numbers[channel]].append(programme(element, number, numbers[channel], shown[channel]))
        for programmes in self.services.values():
            programmes.sort(key=lambda one: one["start_time"])
            for one, following in zip(programmes, programmes[1:] + [None]):
                stop, limit = one.pop("stop"), following["start_time"] if following else None
                end = min(filter(None, (stop, limit)), default=one["start_time"] + LAST_TAKES)
                one["duration"] = end - one["start_time"]

    def all(self):
        return [one for programmes in self.services.values() for one in programmes]

    def within(self, service, start, duration):
        return [one for one in self.services.get(service, []) if duration and
                one["start_time"] < start + duration and one["start_time"] + one["duration"] > start]


def as_text(value):
    """JSON as the service writes it: one line, members in alphabetical order, nothing escaped; "" for None."""
    return "" if value is None else json.dumps(value, ensure_ascii=False, sort_keys=True, separators=(",", ":"))
