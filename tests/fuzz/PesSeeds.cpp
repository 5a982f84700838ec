// SPDX-License-Identifier: MIT
#include "PesSeeds.h"

namespace zviptv::fuzz {

using test::Bytes;
using test::operator+; // NOLINT(misc-unused-using-decls): it is used

namespace {

/// A frame of `size` bytes that begins with `head`.
Bytes Frame(Bytes head, std::size_t size)
{
    head.resize(size, 0x55);
    return head;
}

Bytes FromHex(std::string const& text)
{
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

/// A data group of ARIB captions, or of superimposed text.
Bytes AribPes(std::uint8_t identifier, std::uint8_t group, Bytes const& data)
{
    auto const size = static_cast<std::uint8_t>(data.size());
    Bytes const head{identifier, 0xFF, 0xF1, 0xAA, static_cast<std::uint8_t>(group << 2), 0, 0, 0, size};
    return test::MakePes(1, head + data + Bytes{0x12, 0x34});
}

std::vector<NamedPes> Sounds()
{
    Bytes const adts = Frame({0xFF, 0xF1, 0x4C, 0x80, 0x02, 0x9F, 0xFC}, 20);
    Bytes const latm = Frame({0x56, 0xE0, 0x11, 0x20, 0x00, 0x11, 0x90}, 20);
    std::vector<NamedPes> const frames{
        {"mpeg-layer-1", Frame({0xFF, 0xFF, 0x14, 0x00}, 32)},
        {"mpeg-layer-2-dual", Frame({0xFF, 0xFD, 0x14, 0x80}, 96)},
        {"mpeg-layer-3-low", Frame({0xFF, 0xE3, 0x18, 0xC0}, 72)},
        {"adts", Bytes{1, 2, 3} + adts + adts},
        {"latm", Frame({0x56, 0xE0, 0x0B, 0x80}, 14) + latm},
        {"latm-stereo-extension", Frame({0x56, 0xE0, 0x11, 0x20, 0x00, 0xEB, 0x09, 0x80}, 20)},
        {"latm-rate-of-its-own", Frame({0x56, 0xE0, 0x11, 0x20, 0x00, 0x17, 0x80, 0x5D, 0xC0, 0x10}, 20)},
        {"latm-long-type", Frame({0x56, 0xE0, 0x11, 0x20, 0x00, 0xF8, 0x26, 0x40}, 20)},
        {"ac3", Frame({0x0B, 0x77, 0, 0, 0x00, 0x40, 0x40, 0x00}, 128)},
        {"ac3-surround", Frame({0x0B, 0x77, 0, 0, 0x41, 0x48, 0xE1, 0x00}, 140)},
        {"eac3", Frame({0x0B, 0x77, 0x00, 0x1F, 0x34, 0x80}, 64)},
        {"eac3-half-rate", Frame({0x0B, 0x77, 0x00, 0x1F, 0xC3, 0x80}, 64)},
    };
    std::vector<NamedPes> packets;
    for (NamedPes const& frame : frames) {
        packets.push_back({frame.name, test::MakePes(1, frame.bytes, false, {}, 0xC0)});
    }
    return packets;
}

std::vector<NamedPes> Pictures()
{
    // As encoders wrote them; the third has scaling lists, a picture order of type 1, and all of the
    // usability.
    std::vector<std::pair<char const*, char const*>> const heads{
        {"h264-interlaced", "0000000167640028acd94078044fde022000007d20001d4c03e2c5b2c0"},
        {"h264-full-chroma", "0000000167f4002090d9b280a00b760220000003002000000c81e30632c0"},
        {"h264-scaling",
         "000000016764000091b4d34d34d34d305a69a69a69a69a69a69a69a69a69a69a69a69a69a69a69a68054da65"
         "0507f4c85ffc0030002fac040407c00000fa40003a9820"},
        {"hevc",
         "0000000142010101600000030090000003000003007ba003c08010e596566924caf0168080000003008000001904"},
        {"mpeg2", "000001b32d024033ffffe018000001b5148200010000000001b800080040"},
        {"mpeg1", "000001b316012012ffffe018000001b80008004000000100000ffff8000001"},
    };
    std::vector<NamedPes> packets;
    for (auto const& [name, head] : heads) {
        packets.push_back({name, test::MakePes(1, FromHex(head), true, {}, 0xE0)});
    }
    return packets;
}

} // namespace

Bytes AribLanguagePes()
{
    return AribPes(0x80, 0x00, {0x3F, 1, 0x10, 'j', 'p', 'n', 0x80, 0, 0, 0});
}

std::vector<NamedPes> SmallPesPackets()
{
    std::vector<NamedPes> packets = Sounds();
    for (NamedPes& picture : Pictures()) {
        packets.push_back(std::move(picture));
    }
    Bytes const timed{0xBF, 1,    2,   3,   4,    5,         // a time offset
                      2,    0x1C, 7,   'j', 'p',  'n', 0x80, // shown on a condition
                      0x30, 'e',  'n', 'g', 0x80, 0,   0,    0};
    packets.push_back({"arib-languages", AribLanguagePes()});
    packets.push_back({"arib-superimposed", AribPes(0x81, 0x20, timed)});
    packets.push_back({"arib-text", AribPes(0x80, 0x01, {0x3F, 0, 0, 1, 'x'})});
    return packets;
}

} // namespace zviptv::fuzz
