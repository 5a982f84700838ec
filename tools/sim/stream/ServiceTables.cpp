// SPDX-License-Identifier: MIT
#include "stream/ServiceTables.h"

#include "stream/DvbText.h"
#include "stream/SectionAssembler.h"

namespace zviptv::sim {

namespace {

constexpr std::uint16_t PidMask = 0x1FFF;
constexpr std::uint16_t LengthMask = 0x0FFF;

/// The bytes between the section's header and its CRC.
ByteView BodyOf(ByteView section)
{
    return section.Part(SectionHeadSize, section.Size() - SectionHeadSize - SectionCrcSize);
}

/// The list whose length is in the 16 bits at `at`.
ByteView ListAt(ByteView bytes, std::size_t at)
{
    return bytes.Part(at + 2, bytes.U16(at) & LengthMask);
}

/// Removes and returns an entry that ends with a list, whose length is at `at`.
ByteView TakeEntry(ByteView& rest, std::size_t at)
{
    ByteView const entry = rest.Part(0, at + 2 + ListAt(rest, at).Size());
    rest = rest.Part(entry.Size());
    return entry;
}

ServiceName ParseService(ByteView descriptors)
{
    for (Descriptor const& descriptor : ParseDescriptors(descriptors)) {
        if (descriptor.tag == tag::Service) {
            ByteView const data(descriptor.data);
            ByteView const name = data.Part(2 + std::size_t{data[1]});
            return {DecodeDvbText(name.Part(1, name[0])), DecodeDvbText(data.Part(2, data[1]))};
        }
    }
    return {};
}

} // namespace

bool HasWholePatEntries(ByteView section)
{
    return BodyOf(section).Size() % 4 == 0;
}

bool HasWholePmtHead(ByteView section)
{
    ByteView const body = BodyOf(section);
    return body.Size() >= 4 && body.Size() - 4 >= (body.U16(2) & LengthMask);
}

bool HasWholeSdtHead(ByteView section)
{
    return BodyOf(section).Size() >= 3;
}

std::vector<PatEntry> ParsePat(TableCollector::Sections const& sections)
{
    std::vector<PatEntry> entries;
    for (auto const& [number, section] : sections) {
        for (ByteView rest = BodyOf(section); !rest.Empty(); rest = rest.Part(4)) {
            if (rest.U16(0) != 0) {
                entries.push_back({rest.U16(0), static_cast<std::uint16_t>(rest.U16(2) & PidMask)});
            }
        }
    }
    return entries;
}

Programme ParsePmt(TableCollector::Sections const& sections)
{
    ByteView const first(sections.begin()->second);
    Programme programme;
    programme.number = first.U16(3);
    programme.version = (first[5] >> 1) & 0x1F;
    programme.pcrPid = first.U16(8) & PidMask;
    for (auto const& [number, section] : sections) {
        ByteView rest = BodyOf(section).Part(2);
        auto const own = ParseDescriptors(ListAt(rest, 0));
        programme.descriptors.insert(programme.descriptors.end(), own.begin(), own.end());
        TakeEntry(rest, 0);
        while (rest.Size() >= 5) {
            ByteView const entry = TakeEntry(rest, 3);
            ElementaryStream stream;
            stream.streamType = entry[0];
            stream.pid = entry.U16(1) & PidMask;
            stream.descriptors = ParseDescriptors(entry.Part(5));
            AddStream(programme, std::move(stream));
        }
    }
    return programme;
}

std::map<std::uint16_t, ServiceName> ParseSdt(TableCollector::Sections const& sections)
{
    std::map<std::uint16_t, ServiceName> names;
    for (auto const& [number, section] : sections) {
        ByteView rest = BodyOf(section).Part(3);
        while (rest.Size() >= 5) {
            ByteView const entry = TakeEntry(rest, 3);
            names[entry.U16(0)] = ParseService(entry.Part(5));
        }
    }
    return names;
}

} // namespace zviptv::sim
