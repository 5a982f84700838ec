// SPDX-License-Identifier: MIT
#include <zviptv/MessageBuffer.h>

#include <zviptv/Protocol.h>

#include <array>
#include <climits>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>

CMessageBuffer::CMessageBuffer() : m_spare(1) {}

CMessageBuffer::~CMessageBuffer() = default;
CMessageBuffer::CMessageBuffer(CMessageBuffer const&) = default;
CMessageBuffer::CMessageBuffer(CMessageBuffer&&) noexcept = default;
CMessageBuffer& CMessageBuffer::operator=(CMessageBuffer const&) = default;
CMessageBuffer& CMessageBuffer::operator=(CMessageBuffer&&) noexcept = default;

int CMessageBuffer::Size() const
{
    return static_cast<int>(m_entries.size());
}

void CMessageBuffer::AddValue(char const* key, char const* value)
{
    if (key == nullptr || value == nullptr) {
        return;
    }
    std::size_t const length = std::strlen(value);
    if (length > INT_MAX) {
        throw std::length_error("CMessageBuffer::AddValue: text of 2 GiB or more");
    }
    AddValue(key, static_cast<int>(length), value);
}

void CMessageBuffer::AddValue(char const* key, int size, char const* value)
{
    if (key == nullptr || value == nullptr) {
        return;
    }
    if (size < 0) {
        throw std::length_error("CMessageBuffer::AddValue: negative size");
    }
    m_entries.push_back(MessageEntry{std::string(value, static_cast<std::size_t>(size)), size, key});
}

std::string CMessageBuffer::GetValue(char const* key) const
{
    return std::string(GetView(key));
}

std::string_view CMessageBuffer::GetView(char const* key) const
{
    if (key == nullptr) {
        return {};
    }
    for (MessageEntry const& entry : m_entries) {
        if (entry.key == key) {
            return entry.value;
        }
    }
    return {};
}

std::string CMessageBuffer::GetValue(int index) const
{
    return index >= Size() ? std::string() : m_entries[static_cast<std::size_t>(index)].value;
}

std::string CMessageBuffer::GetKey(int index) const
{
    return index >= Size() ? std::string() : m_entries[static_cast<std::size_t>(index)].key;
}

int CMessageBuffer::GetValueOfSize(int index) const
{
    return index >= Size() ? -1 : m_entries[static_cast<std::size_t>(index)].size;
}

void CMessageBuffer::SetResult(int result)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%d", result);
    AddValue(zviptv::protocol::key::Result, text.data());
}

int CMessageBuffer::GetResult() const
{
    return std::stoi(GetValue(zviptv::protocol::key::Result));
}
