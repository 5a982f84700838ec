// SPDX-License-Identifier: MIT
// A remote control for the terminal: remote [SERVICE]. It shows the television and selects by keys. SERVICE
// is the number of the service in the guide, 1 by default.
#include <zviptv/client/Client.h>

#include <curses.h>
#include <glib-unix.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <map>

using namespace zviptv;

namespace {

std::string Time(std::chrono::system_clock::time_point time)
{
    std::time_t const seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    char text[6];
    return std::string(text, std::strftime(text, sizeof text, "%H:%M", localtime_r(&seconds, &parts)));
}

std::string Line(std::optional<Programme> const& programme)
{
    return programme ? Time(programme->start) + "-" + Time(programme->End()) + "  " + programme->title : "-";
}

/// "  1 eng >2 deu" if the second track is selected.
template <class Track>
std::string Line(std::vector<Track> const& tracks, std::optional<std::int32_t> selected)
{
    std::string line;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        bool const isSelected = selected == static_cast<std::int32_t>(i);
        line += (isSelected ? " >" : "  ") + std::to_string(i + 1) + " " + ToString(tracks[i].language);
    }
    return tracks.empty() ? "  -" : line;
}

template <class Track>
std::int32_t After(std::optional<std::int32_t> selected, std::vector<Track> const& tracks)
{
    return tracks.empty() ? 0 : (selected.value_or(-1) + 1) % static_cast<std::int32_t>(tracks.size());
}

std::string LockText(std::optional<bool> isLocked)
{
    return isLocked.value_or(false) ? "locked" : "not locked";
}

/// The terminal without echo and cursor, as long as this lives.
struct Screen
{
    Screen()
    {
        std::setlocale(LC_ALL, "");
        initscr();
        cbreak();
        noecho();
        nodelay(stdscr, TRUE);
        keypad(stdscr, TRUE);
        curs_set(0);
    }
    ~Screen() { endwin(); }
};

class Remote
{
public:
    explicit Remote(std::uint64_t service)
    {
        m_watcher = StateWatcher(m_television, {std::chrono::milliseconds(500), service},
                                 [this](StateEvent const& event) { OnEvent(event); });
        m_availability =
            m_television.OnAvailability([this](bool isAvailable) { OnAvailability(isAvailable); });
        m_subscription = m_television.SubscribeCaptions([this](CaptionData const& data) { OnCaption(data); });
        Draw();
    }

    bool Runs() const { return m_runs; }

    void ReadKeys()
    {
        for (int key = getch(); key != ERR; key = getch()) {
            OnKey(key);
        }
    }

    void OnKey(int key)
    {
        TelevisionState const& state = m_watcher.State();
        Player& player = m_television.Player();
        if (key == 'm') {
            player.MuteAudio(m_isMuted = !m_isMuted, Done());
        } else if (key == 'v') {
            player.MuteVideo(m_isBlank = !m_isBlank, Done());
        } else if (key == 'a') {
            player.SetCurrentAudioByIndex(After(state.audio, state.audioTracks), Done());
        } else if (key == 's') {
            player.SetCurrentHybridSBT(unsigned(After(state.subtitle, state.subtitles)), Done());
        } else if (key == 't') {
            player.SetCurrentTTX(unsigned(After(state.page, state.pages)), Done());
        } else if (key == 'u') {
            m_television.Broadcast().UnMuteByRatingPin(Done());
        } else if (key == 'q') {
            m_runs = false;
        }
        Draw(); // also after a resize, which is a key
    }

    void AskForClock()
    {
        if (!m_isAsking && m_television.IsAvailable()) {
            m_isAsking = true;
            m_television.Player().GetSTCCount([this](Result<std::uint64_t> const& clock) {
                m_isAsking = false;
                m_clock = clock ? std::to_string(*clock / 90000) + " s" : "-";
                Draw();
            });
        }
    }

private:
    void Draw() const
    {
        TelevisionState const& state = m_watcher.State();
        bool const isAvailable = m_television.IsAvailable();
        Show({isAvailable ? "Television" : "Television: no service; waiting for it", "",
              "State      " + (isAvailable && state.source ? ToString(*state.source) : "-") + "   clock " +
                  m_clock,
              std::string("Sound      ") + (m_isMuted ? "muted" : "on"),
              std::string("Picture    ") + (m_isBlank ? "muted" : "on"),
              "Locks      programme " + LockText(state.programmeLock) + ", service " +
                  LockText(state.serviceLock),
              "Now        " + Line(state.present), "Next       " + Line(m_next), "",
              "Audio    " + Line(state.audioTracks, state.audio),
              "Subtitles" + Line(state.subtitles, state.subtitle),
              "Teletext " + Line(state.pages, state.page), "ARIB     " + Line(state.captions, state.caption),
              "", m_message});
    }

    void Show(std::vector<std::string> lines) const
    {
        for (auto const& [name, text] : m_captions) {
            lines.push_back(name + "  " + text);
        }
        lines.resize(static_cast<std::size_t>(LINES - 1));
        lines.emplace_back("m sound  v picture  a audio  s subtitle  t teletext  u unlock  q quit");
        for (std::size_t row = 0; row < lines.size(); ++row) {
            move(static_cast<int>(row), 0);
            clrtobot(); // what the former line left here
            addstr(lines[row].c_str());
        }
        refresh();
    }

    void OnEvent(StateEvent const& event)
    {
        if (std::holds_alternative<TelevisionState>(event) ||
            std::holds_alternative<ProgrammeChange>(event)) {
            AskForNext();
        }
        Draw();
    }

    void AskForNext()
    {
        m_next.reset();
        if (auto const& present = m_watcher.State().present) {
            using Answer = Result<std::optional<Programme>>;
            m_television.Guide().GetProgram(present->Id(), Neighbour::Next, [this](Answer const& next) {
                m_next = next.ValueOr(std::nullopt);
                Draw();
            });
        }
    }

    void OnCaption(CaptionData const& data)
    {
        for (Caption const& caption : m_decoder.Decode(data)) {
            m_captions[caption.page != 0 ? "page " + std::to_string(caption.page)
                                         : "ARIB " + caption.language] = caption.Text();
        }
        Draw();
    }

    /// A service that comes back has forgotten what was muted.
    void OnAvailability(bool isAvailable)
    {
        if (isAvailable) {
            m_television.Player().MuteAudio(m_isMuted, Done());
            m_television.Player().MuteVideo(m_isBlank, Done());
        }
        m_captions.clear();
        m_clock = "-";
        Draw();
    }

    Completion<void> Done()
    {
        return [this](Result<void> const& result) {
            m_message = result ? "" : ToString(result.GetFailure());
            m_watcher.Refresh();
            Draw();
        };
    }

    Screen m_screen;
    bool m_runs = true;
    bool m_isMuted = false;
    bool m_isBlank = false;
    bool m_isAsking = false;
    std::string m_clock = "-";
    std::string m_message;
    std::optional<Programme> m_next;
    std::map<std::string, std::string> m_captions;
    CaptionDecoder m_decoder;
    StateWatcher m_watcher;
    Listener m_availability;
    Subscription m_subscription;
    Television m_television; // last: outstanding calls complete in its destructor
};

} // namespace

int main(int argc, char** argv)
{
    if (isatty(STDIN_FILENO) == 0) {
        std::cerr << "remote: standard input is not a terminal; start it in one\n";
        return 2;
    }
    Remote remote(argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1);
    auto const goOn = [](int, GIOCondition, void*) -> gboolean { return G_SOURCE_CONTINUE; };
    g_unix_fd_add(STDIN_FILENO, G_IO_IN, goOn, nullptr);
    auto const tick = [](void* data) -> gboolean {
        static_cast<Remote*>(data)->AskForClock();
        return G_SOURCE_CONTINUE;
    };
    g_timeout_add(500, tick, &remote);
    while (remote.Runs()) {
        g_main_context_iteration(nullptr, TRUE); // until a key, a new size or a callback
        remote.ReadKeys();
    }
    return 0;
}
