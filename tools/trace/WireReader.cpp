// SPDX-License-Identifier: MIT
#include "WireReader.h"

#include <string>

namespace zviptv::trace {

namespace {

/// Levels of nested containers; the limit of the D-Bus specification.
constexpr unsigned DeepestNesting = 64;

/// The size of a type of fixed size; 0 for other types.
std::size_t SizeOf(char type)
{
    switch (type) {
    case 'y':
        return 1;
    case 'n':
    case 'q':
        return 2;
    case 'b':
    case 'i':
    case 'u':
    case 'h':
        return 4;
    case 'x':
    case 't':
    case 'd':
        return 8;
    default:
        return 0;
    }
}

/// The length of the first complete type of a signature.
std::size_t TypeLength(std::string_view signature, unsigned depth)
{
    char const type = signature.empty() ? '\0' : signature.front();
    if (depth > DeepestNesting) {
        throw Malformed("a signature is nested too deeply");
    }
    if (type == 'a') {
        return 1 + TypeLength(signature.substr(1), depth + 1);
    }
    if (type == '(' || type == '{') {
        char const end = type == '(' ? ')' : '}';
        std::size_t length = 1;
        while (length < signature.size() && signature[length] != end) {
            length += TypeLength(signature.substr(length), depth + 1);
        }
        if (length >= signature.size() || length == 1) {
            throw Malformed("a signature has a bracket without content or without end");
        }
        return length + 1;
    }
    if (SizeOf(type) == 0 && std::string_view("sogv").find(type) == std::string_view::npos) {
        throw Malformed("a signature contains an unknown type");
    }
    return 1;
}

} // namespace

void WireReader::Align(std::size_t size)
{
    Take((size - m_at % size) % size);
}

std::string_view WireReader::Take(std::size_t size)
{
    if (size > m_bytes.size() - m_at) {
        throw Malformed("a value ends after the message");
    }
    std::string_view const part = m_bytes.substr(m_at, size);
    m_at += size;
    return part;
}

std::uint8_t WireReader::Byte()
{
    return static_cast<std::uint8_t>(Take(1).front());
}

std::uint32_t WireReader::Number()
{
    Align(4);
    std::string_view const bytes = Take(4);
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        auto const byte = static_cast<std::uint8_t>(bytes[m_isLittle ? bytes.size() - 1 - i : i]);
        number = (number << 8U) | byte;
    }
    return number;
}

std::string_view WireReader::String()
{
    std::string_view const text = Take(Number());
    Take(1); // the terminating zero
    return text;
}

std::string_view WireReader::Signature()
{
    std::string_view const text = Take(Byte());
    Take(1);
    return text;
}

std::string_view WireReader::TakeType(std::string_view& signature)
{
    std::string_view const type = signature.substr(0, TypeLength(signature, 0));
    signature.remove_prefix(type.size());
    return type;
}

std::size_t WireReader::AlignmentOf(char type)
{
    std::size_t const size = SizeOf(type);
    if (size != 0) {
        return size;
    }
    return type == '(' || type == '{' ? 8 : type == 's' || type == 'o' || type == 'a' ? 4 : 1;
}

void WireReader::SkipArray(std::string_view element)
{
    std::size_t const size = Number();
    Align(AlignmentOf(element.front()));
    Take(size);
}

void WireReader::Skip(std::string_view type, unsigned depth)
{
    if (depth > DeepestNesting) {
        throw Malformed("a value is nested too deeply");
    }
    char const kind = type.front();
    Align(AlignmentOf(kind));
    if (kind == 's' || kind == 'o') {
        String();
    } else if (kind == 'g') {
        Signature();
    } else if (kind == 'a') {
        SkipArray(type.substr(1));
    } else if (kind == 'v') {
        std::string_view signature = Signature();
        Skip(TakeType(signature), depth + 1);
    } else if (kind == '(' || kind == '{') {
        for (std::string_view members = type.substr(1, type.size() - 2); !members.empty();) {
            Skip(TakeType(members), depth + 1);
        }
    } else {
        Take(SizeOf(kind));
    }
}

} // namespace zviptv::trace
