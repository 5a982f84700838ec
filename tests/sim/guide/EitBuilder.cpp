// SPDX-License-Identifier: MIT
#include "EitBuilder.h"

#include <algorithm>

namespace zviptv::test {

namespace {

Bytes Counted(Bytes const& bytes)
{
    return Bytes{Low(bytes.size())} + bytes;
}

} // namespace

Bytes FromText(std::string const& text)
{
    return Bytes(text.begin(), text.end());
}

EitEventParts::EitEventParts() = default;

Bytes MakeEvent(EitEventParts const& parts)
{
    std::size_t const size = parts.descriptors.size();
    return Bytes{Low(parts.id >> 8), Low(parts.id)} + parts.start + parts.duration +
           Bytes{Low((parts.status & 0xF0u) | (size >> 8)), Low(size)} + parts.descriptors;
}

Bytes MakeDescriptor(std::uint8_t tag, Bytes const& data)
{
    return Bytes{tag} + Counted(data);
}

Bytes MakeShortEvent(std::string const& language, Bytes const& title, Bytes const& text)
{
    return MakeDescriptor(0x4D, FromText(language) + Counted(title) + Counted(text));
}

Bytes MakeExtendedEvent(std::string const& language, Bytes const& text, std::uint8_t number)
{
    Bytes const items = Counted(FromText("Cast")) + Counted(FromText("Nobody"));
    return MakeDescriptor(0x4E, Bytes{Low(std::size_t{number} << 4)} + FromText(language) + Counted(items) +
                                    Counted(text));
}

Bytes MakeEit(EitSectionParts const& parts, Bytes const& events)
{
    Bytes const head{0x00, 0x01, 0x00, 0x02, parts.last, parts.table}; // stream, network, segment, last table
    return MakeSection(parts.table, parts.service, parts.version, head + events, parts.number, parts.last,
                       parts.current);
}

} // namespace zviptv::test
