// SPDX-License-Identifier: MIT
#include "TapStreams.h"

#include "stream/NalUnit.h"

namespace zviptv::sim {

namespace {

constexpr std::uint8_t PrivateData = 0x06; // the stream type of subtitles

using Bytes = std::vector<std::uint8_t>;

void AddDescriptor(Bytes& out, std::uint8_t tag, Bytes const& data)
{
    out.push_back(tag);
    out.push_back(static_cast<std::uint8_t>(data.size()));
    out.insert(out.end(), data.begin(), data.end());
}

void AddU16(Bytes& out, unsigned value)
{
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

Bytes LanguageOf(EZVLanguageCode language)
{
    std::string const code = ZVLanguageToISO639(language);
    std::string const known = code.empty() ? "und" : code;
    return {known.begin(), known.end()};
}

} // namespace

TsWriter::Stream StreamOf(Programme const& programme, std::uint16_t pid)
{
    TsWriter::Stream written;
    written.pid = pid;
    for (ElementaryStream const& stream : programme.streams) {
        if (stream.pid == pid) {
            written.streamType = stream.streamType;
            for (Descriptor const& descriptor : stream.descriptors) {
                AddDescriptor(written.descriptors, descriptor.tag, descriptor.data);
            }
        }
    }
    return written;
}

TsWriter::Stream StreamOf(ZVHybridSBT const& subtitle)
{
    TsWriter::Stream written;
    written.pid = subtitle.pid;
    written.streamType = PrivateData;
    Bytes entry = LanguageOf(subtitle.language);
    entry.push_back(static_cast<std::uint8_t>(subtitle.type));
    AddU16(entry, subtitle.compositionPage);
    AddU16(entry, subtitle.ancillaryPage);
    AddDescriptor(written.descriptors, tag::Subtitling, entry);
    return written;
}

bool JumpWatch::JumpsAt(PesPacket const& pes)
{
    // In units of 1/90000 s.
    constexpr std::int64_t largestStepBack = 45000;
    constexpr std::int64_t largestStep = 180000;
    std::optional<std::uint64_t> const time = pes.dts ? pes.dts : pes.pts;
    if (!time) {
        return false;
    }
    std::int64_t const step =
        m_last ? static_cast<std::int64_t>(*time) - static_cast<std::int64_t>(*m_last) : 0;
    m_last = time;
    return step < -largestStepBack || step > largestStep;
}

bool BeginsPicture(VideoCodec codec, PesPacket const& pes)
{
    constexpr std::size_t near = 4096; // heads come first
    ByteView const bytes = ByteView(pes.bytes).Part(0, near);
    switch (codec) {
    case VideoCodec::Mpeg1:
    case VideoCodec::Mpeg2:
        return FindUnit(bytes, [](std::uint8_t code) { return code == 0xB3; }).has_value();
    case VideoCodec::Mpeg4:
        return FindUnit(bytes, [](std::uint8_t code) { return code >= 0x20 && code <= 0x2F; }).has_value();
    case VideoCodec::H264:
        return FindUnit(bytes, [](std::uint8_t code) { return (code & 0x9F) == 7; }).has_value();
    case VideoCodec::Hevc:
        return FindUnit(bytes, [](std::uint8_t code) { return (code >> 1) == 33; }).has_value();
    }
    return false;
}

} // namespace zviptv::sim
