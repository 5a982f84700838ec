// SPDX-License-Identifier: MIT
#include "EitBuilder.h"
#include "PesSeeds.h"
#include "RtpBytes.h"
#include "SeedWriter.h"
#include "StreamTestSupport.h"

#include "stream/SectionAssembler.h"

#include <cstdio>
#include <iterator>

// stream_seeds CORPUS SAMPLE: makes seeds of a transport stream's packets, sections and PES packets, and of
// event information.

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::fuzz;
using namespace zviptv::test;

namespace {

std::string TextOf(Bytes const& bytes, std::size_t limit = SIZE_MAX)
{
    return std::string(bytes.begin(),
                       bytes.begin() + static_cast<std::ptrdiff_t>(std::min(bytes.size(), limit)));
}

/// For ConsumeSections(): which of the target's PIDs, and the section.
using Sections = std::vector<std::pair<std::size_t, Bytes>>;

std::string SeedOf(Sections const& sections)
{
    constexpr std::size_t Crc = 4;
    SeedWriter seed;
    for (auto const& [pid, section] : sections) {
        seed.Bytes(TextOf(section, section.size() - Crc)).Number16(section.size() - Crc).Number(pid);
    }
    return seed.Seed();
}

Sections SectionsOf(Bytes const& stream, std::uint16_t pid, std::size_t number)
{
    Sections sections;
    SectionAssembler assembler;
    ForEachPacket(stream, [&](TsPacket const& packet) {
        if (packet.pid == pid && sections.empty()) {
            for (Bytes& section : assembler.Push(packet)) {
                sections.emplace_back(number, std::move(section));
            }
        }
    });
    return sections;
}

void WriteTables(std::filesystem::path const& corpus, Bytes const& sample)
{
    Sections all;
    for (auto const& [pid, number] :
         {std::pair<std::uint16_t, std::size_t>{0, 0}, {0x1000, 1}, {0x0011, 2}}) {
        Sections const own = SectionsOf(sample, pid, number);
        all.insert(all.end(), own.begin(), own.end());
        WriteSeed(corpus / "tables", "sample-" + std::to_string(number), SeedOf(own));
    }
    WriteSeed(corpus / "tables", "sample", SeedOf(all));
    Bytes const descriptors{0x0A, 0x08, 'e',  'n',  'g',  0x00, 'd', 'e', 'u',  0x03, 0x52, 0x01,
                            0x11, 0x7F, 0x05, 0x06, 0x01, 'f',  'r', 'a', 0x6A, 0x01, 0x00};
    Bytes const teletext{0x56, 0x0A, 'e', 'n', 'g', 0x09, 0x00, 'd', 'e', 'u', 0x11, 0x88};
    Bytes const arib{0x52, 0x01, 0x30, 0xFD, 0x03, 0x00, 0x08, 0x3D};
    Bytes const captions{0x86, 0x0D, 0xC2, 'e', 'n', 'g', 0xC1, 0x3F, 0xFF, 'k', 'o', 'r', 0xC2, 0x7F, 0xFF};
    Bytes const utf8{0x00, 0x01, 0xFF, 0x00, 0x01, 0xFC, 0x80, 0x0C, 0x48, 0x0A,
                     0x01, 0x01, 'P',  0x06, 0x15, 'C',  'a',  'f',  0xC3, 0xA9};
    Bytes const latin{0x00, 0x01, 0xFF, 0x00, 0x01, 0xFC, 0x80, 0x0D, 0x48, 0x0B, 0x01,
                      0x01, 'P',  0x07, 0x10, 0x00, 0x01, 'C',  'a',  'f',  0xE9};
    WriteSeed(corpus / "tables", "names",
              SeedOf({{0, MakePat({{1, 0x1000}})},
                      {1, MakePmt(1, 0x100, {{0x1B, 0x100, {}}})},
                      {2, MakeSection(0x42, 1, 0, utf8)},
                      {2, MakeSection(0x42, 1, 1, latin)}}));
    WriteSeed(corpus / "tables", "many-kinds",
              SeedOf({{0, MakePat({{1, 0x1000}, {2, 0x0100}})},
                      {1, MakePmt(1, 0x100,
                                  {{0x1B, 0x100, {}},
                                   {0x06, 0x101, descriptors},
                                   {0x06, 0x102, teletext},
                                   {0x06, 0x103, arib},
                                   {0x0F, 0x104, descriptors}},
                                  0, captions)},
                      {3, MakePmt(2, 0x1FFF, {{0x24, 0x200, {}}, {0x02, 0x201, captions}})}}));
}

void WriteFiles(std::filesystem::path const& corpus, Bytes const& sample)
{
    WriteSeed(corpus / "ts_file", "head", TextOf(sample, 60 * TsPacketSize));
    WriteSeed(corpus / "ts_file", "out-of-step", "abc" + TextOf(sample, 20 * TsPacketSize - 9));
    std::string stamped;
    std::string protectedByParity;
    for (std::size_t at = 0; at < 20 * TsPacketSize; at += TsPacketSize) {
        std::string const packet(sample.begin() + static_cast<std::ptrdiff_t>(at),
                                 sample.begin() + static_cast<std::ptrdiff_t>(at + TsPacketSize));
        stamped += std::string(4, '\x05') + packet;
        protectedByParity += packet + std::string(16, '\x06');
    }
    WriteSeed(corpus / "ts_file", "distance-192", stamped);
    WriteSeed(corpus / "ts_file", "distance-204", protectedByParity);
    std::ptrdiff_t const lost = 15 * TsPacketSize;
    WriteSeed(corpus / "ts_file", "out-of-step-inside",
              TextOf(Bytes(sample.begin(), sample.begin() + lost) +
                     Bytes(sample.begin() + lost + 50, sample.begin() + 2 * lost)));
    StreamBuilder jumps;
    jumps.Section(0, MakePat({{1, 0x1000}}))
        .Section(0x1000, MakePmt(1, 0x100, {{0x06, 0x102, {0x56, 0x05, 'e', 'n', 'g', 0x11, 0x88}}}))
        .Pcr(0x100, 1000)
        .Pes(0x102, MakePes(0, Bytes{0x10, 0x03, 0x04, 1, 2, 3, 4, 0x02, 0x01, 9}))
        .Pcr(0x100, (std::uint64_t{1} << 33) * 300 - 1, true)
        .Section(0x1000, MakePmt(1, 0x1FFF, {{0x03, 0x102, {}}}, 1))
        .Pes(0x102, MakePes(900000, Noise(300), true, 800000))
        .Pcr(0x100, 5);
    WriteSeed(corpus / "ts_file", "jumps", TextOf(jumps.Stream()));
    WriteSeed(corpus / "pes", "packets", TextOf(jumps.Stream()) + '\x01');
}

/// A programme of one track of every coding, with small packets of it.
void WriteTracks(std::filesystem::path const& corpus)
{
    std::map<std::string, PmtStream> const tracks{
        {"mpeg-layer-2-dual", {0x03, 0x110, {}}},
        {"adts", {0x0F, 0x111, {}}},
        {"latm", {0x11, 0x112, {}}},
        {"ac3", {0x06, 0x113, {0x6A, 0x01, 0x00}}},
        {"eac3", {0x06, 0x114, {0x7A, 0x01, 0x00}}},
        {"arib-superimposed", {0x06, 0x115, {0x52, 0x01, 0x38, 0xFD, 0x03, 0x00, 0x08, 0x3C}}},
        {"arib-languages", {0x06, 0x116, {0x52, 0x01, 0x30, 0xFD, 0x03, 0x00, 0x08, 0x3D}}}};
    std::vector<PmtStream> streams{{0x02, 0x100, {}}};
    for (auto const& [name, stream] : tracks) {
        streams.push_back(stream);
    }
    StreamBuilder all;
    all.Section(0, MakePat({{1, 0x1000}})).Section(0x1000, MakePmt(1, 0x100, streams)).Pcr(0x100, 1000);
    for (NamedPes const& pes : SmallPesPackets()) {
        WriteSeed(corpus / "pes", pes.name, TextOf(pes.bytes) + '\x00');
        auto const track = tracks.find(pes.name);
        if (track != tracks.end()) {
            all.Pes(track->second.pid, pes.bytes).Pes(track->second.pid, pes.bytes);
        }
    }
    WriteSeed(corpus / "ts_file", "tracks", TextOf(all.Pcr(0x100, 90000).Stream()));
}

void WritePes(std::filesystem::path const& corpus, Bytes const& sample)
{
    Demux demux(InMemory(sample));
    for (Event const& event : Drain(demux)) {
        std::string const name = std::to_string(event.pes.pid);
        if (!event.pes.bytes.empty() && !std::filesystem::exists(corpus / "pes" / name)) {
            WriteSeed(corpus / "pes", name, TextOf(event.pes.bytes, 2000) + '\x00');
        }
    }
    WriteSeed(corpus / "pes", "teletext",
              TextOf(MakePes(0, Bytes{0x10, 0x03, 0x02, 1, 2, 0x02, 0x01, 9})) + '\x00');
    WriteSeed(corpus / "pes", "round-trip", TextOf(Noise(500)) + std::string(8, '\x07') + '\x02');
    WriteSeed(corpus / "pes", "round-trip-of-a-length", TextOf(Noise(184)) + std::string(8, '\x09') + '\x03');
}

void WriteEvents(std::filesystem::path const& corpus)
{
    Bytes const title = FromText("Tonight");
    Bytes const latin{0x05, 'C', 'a', 'f', 0xE9};
    Bytes const wide{0x11, 0x00, 'A', 0x04, 0x10};
    EitEventParts first;
    first.status = 0x80;
    first.descriptors = MakeShortEvent("eng", title, latin) + MakeExtendedEvent("deu", wide) +
                        MakeDescriptor(0x54, {0x10, 0x00, 0x40, 0x00}) +
                        MakeDescriptor(0x55, {'D', 'E', 'U', 0x09});
    EitEventParts second;
    second.id = 2;
    second.start = {0xEE, 0xC5, 0x12, 0x30, 0x00};
    second.descriptors =
        MakeShortEvent("fra", Bytes{0x15, 0xC3, 0xA9}, {}) + MakeShortEvent("eng", title, title);
    Bytes const present = MakeEit({}, MakeEvent(first));
    Bytes const schedule = MakeEit({Schedule, 28106, 3, 8, 248, true}, MakeEvent(second) + MakeEvent(first));
    WriteSeed(corpus / "eit", "present", SeedOf({{0, present}}) + '\x00');
    WriteSeed(corpus / "eit", "schedule", SeedOf({{0, present}, {0, schedule}}) + '\x00');
    WriteSeed(corpus / "eit", "packets",
              TextOf(StreamBuilder().Section(0x12, present).Section(0x12, schedule).Stream()) + '\x01');
}

/// The sample as RTP: in order, and with a packet lost, one twice, two in the wrong order, and a wrap.
void WriteRtp(std::filesystem::path const& corpus, Bytes const& sample)
{
    constexpr std::ptrdiff_t payload = 7 * TsPacketSize;
    auto const write = [&](std::string const& name, std::vector<int> const& order, RtpParts parts) {
        Bytes seed;
        for (int const number : order) {
            parts.sequence = static_cast<std::uint16_t>(65534 + number);
            parts.timestamp = static_cast<std::uint32_t>(900 * number);
            parts.payload.assign(sample.begin() + number * payload, sample.begin() + (number + 1) * payload);
            Bytes const datagram = MakeRtp(parts);
            AddNumber(seed, static_cast<std::uint32_t>(datagram.size()), 2);
            seed = seed + datagram;
        }
        WriteSeed(corpus / "rtp", name, TextOf(seed));
    };
    RtpParts full;
    full.contributors = {1, 2};
    full.extension = Bytes(8, 3);
    full.padding = 5;
    write("in-order", {0, 1, 2, 3, 4, 5}, {});
    write("out-of-order", {0, 2, 1, 1, 3, 5}, full);
    write("jump", {0, 1, 200, 201, 2}, {});
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: stream_seeds CORPUS SAMPLE\n");
        return 2;
    }
    std::ifstream file(argv[2], std::ios::binary);
    Bytes const sample(std::istreambuf_iterator<char>(file), {});
    WriteTables(argv[1], sample);
    WriteFiles(argv[1], sample);
    WriteTracks(argv[1]);
    WritePes(argv[1], sample);
    WriteEvents(argv[1]);
    WriteRtp(argv[1], sample);
    return 0;
}
