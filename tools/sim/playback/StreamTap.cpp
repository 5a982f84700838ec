// SPDX-License-Identifier: MIT
#include "StreamTap.h"

#include "TapStreams.h"
#include "Tracks.h"

namespace zviptv::sim {

namespace {

/// Of a stream that never has such a picture nothing is kept.
constexpr std::size_t MaxKept = std::size_t{16} * 1024 * 1024;

// A subtitle may be shown with a picture if its time differs from the picture's by at most this, in units of
// 1/90000 s.
constexpr std::uint64_t SubtitleAge = 900000;
constexpr std::uint64_t SubtitleLead = 450000;

bool IsSubtitle(PesPacket const& pes)
{
    return pes.kind == StreamKind::Subtitle || pes.kind == StreamKind::Teletext;
}

bool IsShownWith(PesPacket const& subtitle, PesPacket const& picture)
{
    constexpr std::uint64_t wrap = std::uint64_t{1} << 33;
    return subtitle.pts && picture.pts &&
           (*picture.pts - *subtitle.pts + SubtitleLead) % wrap <= SubtitleAge + SubtitleLead;
}

} // namespace

void StreamTap::Keep(PesPacket const& pes)
{
    Programme const& programme = m_player.Current();
    if (programme.video.empty()) {
        return;
    }
    VideoTrack const& video = programme.video.front();
    bool const isVideo = pes.pid == video.pid;
    if (isVideo && m_time.JumpsAt(pes)) {
        Forget();
        ForgetTexts();
    }
    if (isVideo && BeginsPicture(video.codec, pes)) {
        ForgetBefore(pes);
    } else if (isVideo && !m_hasPicture) {
        return;
    }
    if (isVideo || IsSubtitle(pes)) {
        m_kept.push_back(pes);
        m_keptBytes += pes.bytes.size();
    }
    if (m_keptBytes > MaxKept) {
        Forget();
    }
}

/// With this picture decoding can begin. Subtitles that it is shown with may have come earlier.
void StreamTap::ForgetBefore(PesPacket const& picture)
{
    std::deque<PesPacket> const before = std::move(m_kept);
    Forget();
    m_hasPicture = true;
    for (PesPacket const& pes : before) {
        if (IsSubtitle(pes) && IsShownWith(pes, picture)) {
            m_keptBytes += pes.bytes.size();
            m_kept.push_back(pes);
        }
    }
}

void StreamTap::ForgetTexts()
{
    m_caption.Forget();
    m_superimpose.Forget();
}

void StreamTap::Forget()
{
    m_kept.clear();
    m_keptBytes = 0;
    m_hasPicture = false;
}

bool StreamTap::Take(PesPacket const& pes, bool isPassedOver)
{
    Keep(pes);
    m_feeds.remove_if([&](Feed& feed) {
        return isPassedOver || feed.writer.HasFinished() || feed.selected != Selected(feed.kind) ||
               !feed.writer.Add(pes);
    });
    bool const isCaption = m_caption.Take(pes);
    return m_superimpose.Take(pes) || isCaption;
}

void StreamTap::Restart()
{
    m_feeds.clear();
    Forget();
    ForgetTexts();
}

unsigned StreamTap::Selected(Kind kind) const
{
    return kind == Kind::Picture ? m_selection.subtitle : static_cast<unsigned>(m_selection.audio);
}

StreamTap::Content StreamTap::Open(Kind kind, FileHandle pipe)
{
    m_feeds.remove_if([](Feed const& feed) { return feed.writer.HasFinished() || feed.writer.IsBroken(); });
    return kind == Kind::Picture ? OpenPicture(std::move(pipe)) : OpenSound(std::move(pipe));
}

StreamTap::Content StreamTap::OpenPicture(FileHandle pipe)
{
    Programme const& programme = m_player.Current();
    if (programme.video.empty()) {
        return {programme.number == 0 ? State::Waiting : State::Nothing, {}};
    }
    if (!m_hasPicture || m_player.IsSeeking()) {
        return {};
    }
    std::vector<TsWriter::Stream> streams{StreamOf(programme, programme.video.front().pid)};
    std::vector<ZVHybridSBT> const subtitles = HybridSubtitles(programme);
    std::optional<ZVHybridSBT> subtitle;
    if (m_selection.subtitle < subtitles.size()) {
        subtitle = subtitles[m_selection.subtitle];
        streams.push_back(subtitle->kind == ZV_SUBTITLE_DVB ? StreamOf(*subtitle)
                                                            : StreamOf(programme, subtitle->pid));
    }
    Feed& feed = m_feeds.emplace_back(Kind::Picture, std::move(pipe), streams, m_selection.subtitle);
    for (PesPacket const& pes : m_kept) {
        feed.writer.Add(pes);
    }
    if (m_player.Clock().IsPaused() || m_player.HasEnded()) {
        feed.writer.Finish();
        return {State::Still, subtitle};
    }
    return {State::Playing, subtitle};
}

StreamTap::Content StreamTap::OpenSound(FileHandle pipe)
{
    Programme const& programme = m_player.Current();
    std::vector<ZVAudio> const tracks = AudioTracks(programme);
    auto const selected = static_cast<std::size_t>(m_selection.audio);
    if (selected >= tracks.size()) {
        return {programme.number == 0 ? State::Waiting : State::Nothing, {}};
    }
    if (m_player.Clock().IsPaused() || m_player.HasEnded() || m_player.IsSeeking()) {
        return {};
    }
    m_feeds.emplace_back(Kind::Sound, std::move(pipe),
                         std::vector<TsWriter::Stream>{StreamOf(programme, tracks[selected].pid)},
                         static_cast<unsigned>(selected));
    return {State::Playing, {}};
}

} // namespace zviptv::sim
