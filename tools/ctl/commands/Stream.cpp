// SPDX-License-Identifier: MIT
#include "Stream.h"

#include "PacketLine.h"
#include "common/PrintableText.h"
#include "output/Words.h"
#include "session/Explanations.h"

#include <csignal>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace zviptv::ctl {

namespace {

constexpr int LongSilence = 5; // seconds

} // namespace

Stream::Stream(Session& session, StreamOptions options)
    : m_session(session), m_options(std::move(options)), m_lines("-"), m_live(STDERR_FILENO)
{
    if (!m_options.out.empty()) {
        m_file.emplace(m_options.out, m_options.form);
    }
}

ExitCode Stream::Run()
{
    m_session.Start();
    if (m_options.captions) {
        m_captions.emplace(m_session, *m_options.captions);
    }
    auto const end = [this] { End(); };
    EventSource const interrupt = Loop::OnSignal(SIGINT, end);
    EventSource const terminate = Loop::OnSignal(SIGTERM, end);
    ServiceWatch const watch(m_session.Connection(), [this](ServiceWatch::Event event) { OnService(event); });
    EndpointWatch endpoint(m_session.Connection());
    std::optional<Subscription> subscription;
    Subscribe(
        m_session, m_options.kind, [this](Packet const& packet) { Take(packet); }, subscription);
    m_traffic = Traffic();
    endpoint.Follow([&] {
        Fail(Failure(ExitCode::NoService, EndpointClosed(endpoint.Name()) + ", then run this command again"));
    });

    EventSource const second = Loop::Every(std::chrono::seconds(1), [&] {
        ReportProblems(endpoint);
        OnSecond();
    });
    EventSource const limit = m_options.duration ? Loop::Every(*m_options.duration, end) : EventSource();
    m_loop.Run([this](std::exception const& error) { OnUnreadable(error); });
    ReportProblems(endpoint);
    Unsubscribe(*subscription);
    return Finish();
}

/// If the service has left, there is nothing to unsubscribe.
void Stream::Unsubscribe(Subscription& subscription)
{
    bool const isServiceLost = m_failure && m_failure->Code() != ExitCode::CannotWrite;
    if (!isServiceLost) {
        subscription.End(m_session.Get<IIPTVDataSubscriber>());
    }
}

// After the end, a packet of the same batch of events may still arrive.
void Stream::Take(Packet const& packet)
{
    if (m_ended || !IsChosen(packet)) {
        return;
    }
    try {
        if (!m_captions || CaptionOutput::IsCaption(packet)) {
            m_traffic.Add(packet.data.size());
            m_silentSeconds = 0;
        }
        bool const isRead = m_captions ? Write(m_captions->Take(packet)) : Write(packet);
        if (!isRead || (m_options.count && m_lineCount >= *m_options.count)) {
            End();
        }
    } catch (Failure const& failure) {
        Fail(failure);
    }
}

bool Stream::IsChosen(Packet const& packet) const
{
    return m_options.pids.empty() || m_options.pids.count(packet.pid.value_or(0)) != 0;
}

void Stream::ReportProblems(EndpointWatch& endpoint)
{
    for (std::string const& problem : endpoint.TakeProblems()) {
        Print(problem);
    }
}

void Stream::OnSecond()
{
    if (!m_ended && ++m_silentSeconds % LongSilence == 0) {
        ReportSilence();
    }
    m_traffic.Measure();
    m_live.Show(m_traffic.Now());
}

/// Reports each of the two once: the source may end later.
void Stream::ReportSilence()
{
    if (!m_hasReportedEnd && HasSourceEnded()) {
        m_hasReportedEnd = m_hasReportedSilence = true;
        Print("the source has ended: packets arrive only if it starts again; press Ctrl-C to end");
    } else if (!m_hasReportedSilence) {
        m_hasReportedSilence = true;
        Print("no data has arrived for " + std::to_string(LongSilence) + " seconds; press Ctrl-C to end");
    }
}

bool Stream::HasSourceEnded()
{
    EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
    try {
        auto& player = m_session.Get<IPlayerControl>();
        m_session.Ask("GetSourceState", [&] { return player.GetSourceState(state); });
    } catch (Failure const&) {
        return false; // this query is optional: packets may still arrive
    }
    return state == ZV_SOURCE_STATE_ENDED;
}

/// Returns false if the output is no longer read.
bool Stream::Write(Packet const& packet)
{
    ++m_lineCount;
    if (m_file && !m_file->Write(packet)) {
        return false;
    }
    return (m_file && m_file->IsStandardOutput()) || WriteLine(PacketLine(packet, m_options.asJson));
}

bool Stream::Write(std::vector<Caption> const& captions)
{
    for (Caption const& caption : captions) {
        bool const isLast = m_options.count && ++m_lineCount >= *m_options.count;
        bool const isRead = m_captions->Write(caption) && (m_captions->IsStandardOutput() ||
                                                           WriteLine(CaptionText(caption, m_options.asJson)));
        if (!isRead || isLast) {
            return isRead;
        }
    }
    return true;
}

bool Stream::WriteLine(std::string const& line)
{
    m_live.Erase();
    return m_lines.Write(line.data(), line.size());
}

void Stream::OnService(ServiceWatch::Event event)
{
    if (event == ServiceWatch::Event::Gone) {
        Fail(Failure(ExitCode::NoService, "the service left the bus; start it, then run this command again"));
    } else if (event == ServiceWatch::Event::BusClosed) {
        Fail(Failure(ExitCode::NoAnswer, BusClosed));
    }
}

void Stream::OnUnreadable(std::exception const& error)
{
    ++m_unreadable;
    Print(UnreadableNotification(error) + "; skipped");
}

void Stream::End()
{
    m_ended = true;
    m_loop.Quit();
}

void Stream::Fail(Failure const& failure)
{
    if (!m_failure) {
        m_failure = failure;
    }
    End();
}

void Stream::Print(std::string const& text)
{
    m_live.Erase();
    std::fprintf(stderr, "zviptvctl: %s\n", PrintableText(text).c_str());
}

ExitCode Stream::Finish()
{
    if (m_captions && !m_failure && !(m_options.count && m_lineCount >= *m_options.count)) {
        Write(m_captions->Flush());
    }
    Print(m_traffic.Summary());
    if (m_failure) {
        throw *m_failure;
    }
    for (std::string const& problem : m_file       ? m_file->Close()
                                      : m_captions ? m_captions->Close()
                                                   : std::vector<std::string>()) {
        Print(problem);
    }
    if (m_unreadable > 0) {
        throw Failure(ExitCode::Malformed, Counted(m_unreadable, "notification") + " could not be read");
    }
    return ExitCode::Accepted;
}

} // namespace zviptv::ctl
