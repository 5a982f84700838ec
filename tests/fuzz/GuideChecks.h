// SPDX-License-Identifier: MIT
#pragma once

#include "Fuzz.h"
#include "guide/GuideFile.h"
#include "guide/GuideJson.h"

namespace zviptv::fuzz {

/// Checks that apply to every programme of every guide.
inline void CheckProgramme(sim::Guide const& guide, std::uint32_t position)
{
    sim::GuideEntry const& entry = guide.At(position);
    std::uint64_t const service = guide.ServiceAt(position).id;
    Require(entry.duration > 0, "a programme lasts");
    Json::Value json;
    Require(ParseJsonLine(sim::ProgrammeJson(guide, position), json), "a programme's JSON");
    Require(json["event_id"].asUInt() == entry.eventId && json["start_time"].asUInt() == entry.start &&
                json["service_id"].asString() == std::to_string(service),
            "says what the programme is");
    Require(IsJsonLine(sim::GenresJson(guide, position)), "its genres' JSON");
    std::string const rating = sim::RatingJson(guide, position);
    Require(rating.empty() || IsJsonLine(rating), "its rating's JSON");

    Require(guide.Present(service, entry.start) == position, "it is on when it starts");
    Require(guide.Present(service, static_cast<std::int64_t>(entry.Stop()) - 1) == position, "until it ends");
    Require(guide.Find(service, entry.eventId).has_value(), "it is found by its event id");
    Require(guide.List(service, entry.start, 1).first == position, "it is in the list of its time");
    Require(guide.Neighbour(position, 0) == position, "it is its own neighbour");
}

/// Programmes are in order, no two of a service overlap, and every way to ask leads to them.
inline void CheckGuide(sim::Guide const& guide)
{
    std::uint32_t count = 0;
    std::uint64_t lastId = 0;
    for (sim::GuideService const& service : guide.Services()) {
        Require(&service == &guide.Services().front() || service.id > lastId, "services are in order");
        lastId = service.id;
        Require(guide.FindService(service.id) == &service, "a service is found by its id");
        Require(service.first == count, "a service's programmes are together");
        count = service.End();
        for (std::uint32_t at = service.first; at < service.End(); ++at) {
            CheckProgramme(guide, at);
            bool const hasNext = at + 1 < service.End();
            Require(!hasNext || guide.At(at).Stop() <= guide.At(at + 1).start, "programmes do not overlap");
        }
    }
    Require(count == guide.All().count, "every programme has a service");
    Require(IsJsonLine(sim::ProgrammesJson(guide, guide.All())), "the list's JSON");
}

} // namespace zviptv::fuzz
