// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zviptv::fuzz {

/// A D-Bus message in little-endian order. Its fields and its body may be wrong.
struct BusMessage
{
    using Pairs = std::vector<std::pair<std::string, std::string>>;

    std::uint8_t type = 1;
    std::uint32_t serial = 1;
    std::uint32_t replySerial = 0;
    std::string path;
    std::string interface;
    std::string member;
    std::string errorName;
    std::string destination;
    std::string sender;
    std::string signature; ///< of the body: "a{sv}", "a(ss)" or only "s"; empty for no body
    Pairs entries;         ///< of the body; of an entry for "s" the first text

    std::string Bytes() const
    {
        std::string fields;
        AddField(fields, 1, 'o', path);
        AddField(fields, 2, 's', interface);
        AddField(fields, 3, 's', member);
        AddField(fields, 4, 's', errorName);
        AddField(fields, 6, 's', destination);
        AddField(fields, 7, 's', sender);
        AddField(fields, 8, 'g', signature);
        if (replySerial != 0) {
            Align(fields, 8);
            fields += std::string("\5\1u\0", 4);
            AddNumber(fields, replySerial);
        }
        std::string const body = Body();
        std::string bytes{'l', static_cast<char>(type), '\0', '\1'};
        AddNumber(bytes, static_cast<std::uint32_t>(body.size()));
        AddNumber(bytes, serial);
        AddNumber(bytes, static_cast<std::uint32_t>(fields.size()));
        bytes += fields;
        Align(bytes, 8);
        return bytes + body;
    }

    static void AddNumber(std::string& bytes, std::uint32_t number)
    {
        Align(bytes, 4);
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes += static_cast<char>(number >> shift);
        }
    }

private:
    static void Align(std::string& bytes, std::size_t size)
    {
        bytes.resize((bytes.size() + size - 1) / size * size);
    }

    static void AddText(std::string& bytes, std::string const& text)
    {
        AddNumber(bytes, static_cast<std::uint32_t>(text.size()));
        bytes += text + '\0';
    }

    static void AddField(std::string& fields, char code, char type, std::string const& text)
    {
        if (text.empty()) {
            return;
        }
        Align(fields, 8);
        fields += {code, '\1', type, '\0'};
        if (type == 'g') {
            fields += static_cast<char>(text.size());
            fields += text + '\0';
        } else {
            AddText(fields, text);
        }
    }

    std::string Body() const
    {
        std::string body;
        if (signature.empty()) {
            return body;
        }
        bool const isArray = signature.front() == 'a';
        body.append(isArray ? 8 : 0, '\0'); // the array's length, and what its first entry is aligned with
        for (auto const& [key, value] : entries) {
            if (isArray) {
                Align(body, 8);
            }
            AddText(body, key);
            if (signature == "a{sv}") {
                body += std::string("\2ay\0", 4);
                AddNumber(body, static_cast<std::uint32_t>(value.size()));
                body += value;
            } else if (isArray) {
                AddText(body, value);
            }
        }
        if (isArray) {
            std::string size;
            AddNumber(size, static_cast<std::uint32_t>(body.size() - 8));
            body.replace(0, 4, size);
        }
        return body;
    }
};

/// A pcap file of D-Bus messages.
class CaptureBytes
{
public:
    /// `time` is in microseconds since 1970.
    void Add(std::int64_t time, std::string const& message)
    {
        constexpr std::int64_t million = 1'000'000;
        AddNumber(static_cast<std::uint32_t>(time / million));
        AddNumber(static_cast<std::uint32_t>(time % million));
        AddNumber(static_cast<std::uint32_t>(message.size()));
        AddNumber(static_cast<std::uint32_t>(message.size()));
        m_bytes += message;
    }

    std::string const& Bytes() const { return m_bytes; }

private:
    void AddNumber(std::uint32_t number)
    {
        std::string bytes;
        BusMessage::AddNumber(bytes, number);
        m_bytes += bytes;
    }

    std::string m_bytes{"\xD4\xC3\xB2\xA1\2\0\4\0\0\0\0\0\0\0\0\0\0\0\0\x08\xE7\0\0\0", 24};
};

} // namespace zviptv::fuzz
