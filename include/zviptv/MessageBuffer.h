// SPDX-License-Identifier: MIT
/// @file
/// The message of requests, replies and notifications.

#pragma once

#include <zviptv/Export.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zviptv {
struct MessageAccess;
}

/// One entry of a CMessageBuffer.
struct MessageEntry
{
    std::string value; ///< value bytes, zero bytes included
    std::int32_t size; ///< number of value bytes, as declared when the entry was added
    std::string key;   ///< UTF-8 without zero bytes, otherwise the message cannot be sent
};

/// Ordered list of key/value entries: every request, reply and notification is one.
/// Values are byte strings with an explicit size. Numbers are decimal text, records are their bytes. Keys
/// need not be unique: adding appends an entry, looking up finds the first one. The buffer owns copies of its
/// keys and values, and is copied by value.
/// Threads: no operation locks; use a buffer from one thread at a time.
class ZVIPTV_API CMessageBuffer
{
public:
    /// An empty message.
    CMessageBuffer();

    /// Frees the entries.
    virtual ~CMessageBuffer();

    /// Copies all entries.
    CMessageBuffer(CMessageBuffer const&);

    /// Takes over the entries; the other message may be destroyed or assigned to.
    CMessageBuffer(CMessageBuffer&&) noexcept;

    /// Replaces the entries with copies.
    CMessageBuffer& operator=(CMessageBuffer const&);

    /// Replaces the entries with those of the other message.
    CMessageBuffer& operator=(CMessageBuffer&&) noexcept;

    /// Number of entries.
    int Size() const;

    /// Appends a text entry: the bytes of `value` without its terminating zero. Does nothing when `key` or
    /// `value` is null. Throws std::length_error for a text of 2 GiB or more.
    void AddValue(char const* key, char const* value);

    /// Appends `size` bytes starting at `value`, zero bytes included; a size of 0 appends an empty entry. The
    /// other end of a channel does not get empty entries: there the key is absent. Does nothing when `key` or
    /// `value` is null. Throws std::length_error for a negative size.
    void AddValue(char const* key, int size, char const* value);

    /// Copy of the first value under `key`; empty when the key is null or absent.
    std::string GetValue(char const* key) const;

    /// View of the first value under `key`; empty if the key is null or absent. It is valid until the message
    /// is changed, assigned to, moved from or destroyed.
    std::string_view GetView(char const* key) const;

    /// Copy of the value at `index`, 0 to Size() - 1; empty past the end. A negative index is undefined
    /// behaviour.
    std::string GetValue(int index) const;

    /// Copy of the key at `index`; empty past the end. A negative index is undefined behaviour.
    std::string GetKey(int index) const;

    /// Size in bytes of the value at `index`; -1 past the end. A negative index is undefined behaviour.
    int GetValueOfSize(int index) const;

    /// Appends `result` as decimal text under "result_internal". If set several times, the first result
    /// is used.
    void SetResult(int result);

    /// The number under "result_internal". Throws std::invalid_argument ("stoi") if there is none, and
    /// std::out_of_range ("stoi") if it is not a 32-bit number.
    int GetResult() const;

private:
    friend struct zviptv::MessageAccess;

    std::vector<MessageEntry> m_entries;
    std::int32_t m_spare;
};
