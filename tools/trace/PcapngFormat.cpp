// SPDX-License-Identifier: MIT
#include "CaptureFormat.h"

#include <pcap/dlt.h>

namespace zviptv::trace {

namespace {

// Numbers of the pcapng specification.
constexpr std::uint32_t SectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t InterfaceDescription = 1;
constexpr std::uint32_t EnhancedPacket = 6;
constexpr std::uint32_t ByteOrderMagic = 0x1A2B3C4D;
constexpr std::uint16_t ProgramOption = 4;

/// The content of a block: numbers in the byte order of the machine, everything padded to 4 bytes.
class Block
{
public:
    Block& Add16(std::uint16_t number) { return AddBytes(&number, sizeof(number)); }
    Block& Add32(std::uint32_t number) { return AddBytes(&number, sizeof(number)); }

    Block& AddText(std::string const& text)
    {
        AddBytes(text.data(), text.size());
        return AddPadding();
    }

    Block& AddPadding()
    {
        m_bytes.resize((m_bytes.size() + 3) / 4 * 4);
        return *this;
    }

    std::string const& Bytes() const { return m_bytes; }

private:
    Block& AddBytes(void const* bytes, std::size_t size)
    {
        m_bytes.append(static_cast<char const*>(bytes), size);
        return *this;
    }

    std::string m_bytes;
};

class PcapngFormat : public CaptureWriter::Format
{
public:
    PcapngFormat(std::FILE* stream, std::string const& program) : m_stream(stream)
    {
        Block section;
        section.Add32(ByteOrderMagic).Add16(1).Add16(0);
        section.Add32(0xFFFFFFFF).Add32(0xFFFFFFFF); // the length of the section is not known
        section.Add16(ProgramOption).Add16(static_cast<std::uint16_t>(program.size())).AddText(program);
        section.Add16(0).Add16(0); // end of the options
        Block interface;
        interface.Add16(DLT_DBUS).Add16(0).Add32(LongestMessage);
        m_headSize =
            Put(SectionHeader, section.Bytes(), {}) + Put(InterfaceDescription, interface.Bytes(), {});
    }

    ~PcapngFormat() override { std::fclose(m_stream); }

    PcapngFormat(PcapngFormat const&) = delete;
    PcapngFormat& operator=(PcapngFormat const&) = delete;

    std::FILE* Stream() const override { return m_stream; }

    std::size_t Add(Message const& message) override
    {
        auto const time = static_cast<std::uint64_t>(message.time);
        auto const size = static_cast<std::uint32_t>(message.bytes.size());
        Block head;
        head.Add32(0); // the interface
        head.Add32(static_cast<std::uint32_t>(time >> 32U)).Add32(static_cast<std::uint32_t>(time));
        head.Add32(size).Add32(size);
        return Put(EnhancedPacket, head.Bytes(), message.bytes);
    }

    std::size_t HeadSize() const override { return m_headSize; }

private:
    std::size_t Put(std::uint32_t type, std::string const& head, std::string const& data)
    {
        constexpr std::size_t frame = 12; // the type, and the length at both ends
        std::size_t const padding = (4 - data.size() % 4) % 4;
        std::size_t const size = frame + head.size() + data.size() + padding;
        auto const length = static_cast<std::uint32_t>(size);
        constexpr char zeros[4] = {};
        std::fwrite(&type, sizeof(type), 1, m_stream);
        std::fwrite(&length, sizeof(length), 1, m_stream);
        std::fwrite(head.data(), 1, head.size(), m_stream);
        std::fwrite(data.data(), 1, data.size(), m_stream);
        std::fwrite(zeros, 1, padding, m_stream);
        std::fwrite(&length, sizeof(length), 1, m_stream);
        return size;
    }

    std::FILE* const m_stream;
    std::size_t m_headSize = 0;
};

} // namespace

std::unique_ptr<CaptureWriter::Format> NewPcapngFormat(std::FILE* stream, std::string const& program)
{
    return std::make_unique<PcapngFormat>(stream, program);
}

} // namespace zviptv::trace
