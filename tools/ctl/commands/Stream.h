// SPDX-License-Identifier: MIT
#pragma once

#include "CaptionOutput.h"
#include "PacketFile.h"
#include "output/LiveLine.h"
#include "output/OutputFile.h"
#include "output/Traffic.h"
#include "session/EndpointWatch.h"
#include "session/Loop.h"
#include "session/ServiceWatch.h"
#include "session/Session.h"
#include "session/Subscription.h"

#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zviptv::ctl {

struct StreamOptions
{
    PacketKind kind = PacketKind::Pes;
    std::optional<std::uint64_t> count;
    std::optional<std::chrono::milliseconds> duration;
    std::set<std::uint16_t> pids; ///< empty for all
    std::string out;              ///< output file, "-" for standard output instead of lines; empty for none
    PacketFile::Form form = PacketFile::Form::Packets; ///< form of the file
    std::optional<CaptionOptions> captions;            ///< shows captions as text; needs PES packets
    bool asJson = false;
};

/// The commands `pes` and `caption`: print one line per packet or caption until the count is reached, the
/// time is over, or the user or the service ends it.
class Stream
{
public:
    Stream(Session& session, StreamOptions options);

    ExitCode Run();

private:
    void Unsubscribe(Subscription& subscription);
    void Take(Packet const& packet);
    bool IsChosen(Packet const& packet) const;
    bool Write(std::vector<Caption> const& captions);
    bool WriteLine(std::string const& line);
    void ReportProblems(EndpointWatch& endpoint);
    void OnSecond();
    bool HasSourceEnded();
    void ReportSilence();
    bool Write(Packet const& packet);
    void OnService(ServiceWatch::Event event);
    void OnUnreadable(std::exception const& error);
    void End();
    void Fail(Failure const& failure);
    void Print(std::string const& text);
    ExitCode Finish();

    Session& m_session;
    StreamOptions const m_options;
    OutputFile m_lines;
    std::optional<PacketFile> m_file;
    std::optional<CaptionOutput> m_captions;
    std::uint64_t m_lineCount = 0;
    LiveLine m_live;
    Loop m_loop;
    Traffic m_traffic;
    std::optional<Failure> m_failure;
    std::uint64_t m_unreadable = 0;
    int m_silentSeconds = 0;
    bool m_hasReportedEnd = false;
    bool m_hasReportedSilence = false;
    bool m_ended = false;
};

} // namespace zviptv::ctl
