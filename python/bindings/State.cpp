// SPDX-License-Identifier: MIT
#include "State.h"

#include "Convert.h"

#include <array>

namespace zviptv::python {

namespace {

char const* const StateModule = "zviptv._state";

/// The classes of the package in the order of StateEvent, from its second alternative on.
constexpr std::array Changes{
    "SourceChange",       "AudioTracksChange",   "SubtitlesChange",   "TeletextPagesChange", "CaptionsChange",
    "SuperimposesChange", "AudioChange",         "SubtitleChange",    "TeletextPageChange",  "CaptionChange",
    "SuperimposeChange",  "ProgrammeLockChange", "ServiceLockChange", "ProgrammeChange"};
static_assert(Changes.size() + 1 == std::variant_size_v<StateEvent>);

template <class Value>
py::object ToValue(Value const& value)
{
    return ToPython(value);
}

template <class Track>
py::object ToValue(std::vector<Track> const& tracks)
{
    return py::tuple(ToPython(tracks));
}

/// The package has the values in the order of StateEvent, too.
template <auto... Values>
py::object ToState(TelevisionState const& state, std::variant<TelevisionState, StateChange<Values>...> const*)
{
    return Class(StateModule, "TelevisionState")(ToValue(state.*Values)...);
}

struct EventToPython
{
    std::size_t index;

    py::object operator()(TelevisionState const& state) const { return ToPython(state); }
    template <class Change>
    py::object operator()(Change const& change) const
    {
        return Class(StateModule, Changes.at(index - 1))(ToValue(change.before), ToValue(change.after));
    }
};

} // namespace

py::object ToPython(TelevisionState const& value)
{
    return ToState(value, static_cast<StateEvent const*>(nullptr));
}

py::object ToPython(StateEvent const& value)
{
    return std::visit(EventToPython{value.index()}, value);
}

} // namespace zviptv::python
