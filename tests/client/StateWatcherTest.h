// SPDX-License-Identifier: MIT
#pragma once

#include "ClientTest.h"

namespace zviptv::test {

inline std::string AudioBytes(std::string const& language)
{
    return std::string(language.rbegin(), language.rend()) + std::string(29, '\0');
}

inline std::string const Film =
    R"({"service_id":"7","event_id":4,"start_time":1774733400,"duration":10800,"title":"Cellar Door"})";
inline std::string const NextFilm =
    R"({"service_id":"7","event_id":5,"start_time":1774744200,"duration":1800,"title":"Night Trains"})";

/// A service with two audio tracks and a guide, and the events of a watcher.
class StateWatcherTest : public TelevisionTest
{
protected:
    StateWatcherTest() { SetUpAnswers(*m_service); }

    static void SetUpAnswers(FakeService& service)
    {
        for (char const* const list : {"SizeOfHybridSBT", "SizeOfTTX", "SizeOfISDBText"}) {
            service.Answer(list, {{"result_internal", "1"}, {"size", "0"}});
        }
        for (char const* const selected : {"GetCurrentHybridSBT", "GetCurrentTTX", "GetCurrentISDBText"}) {
            service.Answer(selected, {{"result_internal", "0"}});
        }
        service.Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "2"}});
        service.Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "2"}});
        service.AnswerBy("GetAudio", [](WireMessage const& request) {
            return WireAnswer(
                Entries({{"result_internal", "1"},
                         {"audio", AudioBytes(request.Value("index") == "0" ? "eng" : "deu")}}));
        });
        SelectAudio(service, "0");
        Lock(service, "0");
        service.Answer("FlagServiceLocked", {{"result_internal", "1"}, {"outServiceLocked", "0"}});
        service.Answer("GetPresentProgram", {{"data", Film}});
    }
    static void SelectAudio(FakeService& service, std::string const& index)
    {
        service.Answer("GetCurrentAudioInfo",
                       {{"result_internal", "1"}, {"landCode", "6647399"}, {"index", index}});
    }
    static void Lock(FakeService& service, std::string const& lock)
    {
        service.Answer("GetRatingLockState", {{"result_internal", "1"}, {"lockState", lock}});
    }

    void Watch(StateOptions options = {std::chrono::milliseconds(5), 7})
    {
        m_watcher = std::make_unique<StateWatcher>(*m_television, options,
                                                   [this](StateEvent const& event) { OnEvent(event); });
    }
    void OnEvent(StateEvent const& event)
    {
        m_events.push_back(event);
        m_texts.push_back(ToString(event));
        if (m_action) {
            m_action();
        }
    }
    bool AwaitEvents(std::size_t count)
    {
        return RunUntil([&] { return m_events.size() >= count; });
    }
    std::size_t Count(std::string const& function) const
    {
        std::size_t count = 0;
        for (WireMessage const& request : m_service->Requests()) {
            count += request.Value("functionname") == function ? 1U : 0U;
        }
        return count;
    }
    /// Runs until this many further rounds have ended.
    bool AwaitRounds(std::size_t rounds)
    {
        std::size_t const before = Count("GetSourceState");
        return RunUntil([&] { return Count("GetSourceState") > before + rounds; });
    }

    std::vector<StateEvent> m_events;
    std::vector<std::string> m_texts;
    std::function<void()> m_action;
    std::unique_ptr<StateWatcher> m_watcher;
};

} // namespace zviptv::test
