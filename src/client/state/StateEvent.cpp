// SPDX-License-Identifier: MIT
#include <zviptv/client/StateWatcher.h>

#include <array>

namespace zviptv {

namespace {

/// The values of TelevisionState in the order of StateEvent, from its second alternative on.
constexpr std::array Names{"source",       "audio tracks",   "subtitles",    "teletext pages", "captions",
                           "superimposes", "audio track",    "subtitle",     "teletext page",  "caption",
                           "superimpose",  "programme lock", "service lock", "programme"};
static_assert(Names.size() + 1 == std::variant_size_v<StateEvent>);

template <class Track>
std::string Text(std::vector<Track> const& tracks)
{
    std::string text;
    for (Track const& track : tracks) {
        std::string const language = ToString(track.language);
        text += (text.empty() ? "" : ", ") + (language.empty() ? "?" : language);
    }
    return "[" + text + "]";
}

std::string Text(std::optional<SourceState> const& state)
{
    return state ? ToString(*state) : "none";
}

std::string Text(std::optional<std::int32_t> const& index)
{
    return index ? std::to_string(*index) : "none";
}

std::string Text(std::optional<bool> const& lock)
{
    return !lock ? "none" : *lock ? "locked" : "not locked";
}

std::string Text(std::optional<Programme> const& programme)
{
    return programme ? ToString(*programme) : "none";
}

template <auto... Values>
std::string WholeText(TelevisionState const& state,
                      std::variant<TelevisionState, StateChange<Values>...> const*)
{
    std::string text;
    auto const* name = Names.data();
    ((text += (text.empty() ? "" : "; ") + std::string(*name++) + ": " + Text(state.*Values)), ...);
    return text;
}

template <auto... Values>
bool AreEqual(TelevisionState const& left, TelevisionState const& right,
              std::variant<TelevisionState, StateChange<Values>...> const*)
{
    return ((left.*Values == right.*Values) && ...);
}

struct EventText
{
    std::size_t index;

    std::string operator()(TelevisionState const& state) const
    {
        return WholeText(state, static_cast<StateEvent const*>(nullptr));
    }
    template <class Change>
    std::string operator()(Change const& change) const
    {
        return std::string(Names.at(index - 1)) + ": " + Text(change.before) + " -> " + Text(change.after);
    }
};

} // namespace

bool operator==(TelevisionState const& left, TelevisionState const& right)
{
    return AreEqual(left, right, static_cast<StateEvent const*>(nullptr));
}

std::string ToString(StateEvent const& event)
{
    return std::visit(EventText{event.index()}, event);
}

} // namespace zviptv
