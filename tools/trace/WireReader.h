// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace zviptv::trace {

/// The bytes are not a D-Bus message; the text contains the reason.
class Malformed : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Reads successive values of D-Bus types from the start of a header or of a body. Views point into
/// the bytes. Every function throws Malformed if the bytes end before the value does.
class WireReader
{
public:
    WireReader(std::string_view bytes, bool isLittleEndian) : m_bytes(bytes), m_isLittle(isLittleEndian) {}

    std::size_t Position() const { return m_at; }

    /// Skips the padding before a value that is aligned to `size` bytes.
    void Align(std::size_t size);

    std::string_view Take(std::size_t size);
    std::uint8_t Byte();
    std::uint32_t Number();

    /// A string or an object path.
    std::string_view String();
    std::string_view Signature();

    /// Skips a value of one complete type.
    void Skip(std::string_view type) { Skip(type, 0); }

    /// Removes and returns the first complete type of a signature.
    static std::string_view TakeType(std::string_view& signature);

private:
    void Skip(std::string_view type, unsigned depth);
    void SkipArray(std::string_view element);
    static std::size_t AlignmentOf(char type);

    std::string_view m_bytes;
    bool m_isLittle;
    std::size_t m_at = 0;
};

} // namespace zviptv::trace
