// SPDX-License-Identifier: MIT
/// @file
/// The message that every request, reply and notification is.

#pragma once

#include <zviptv/Export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zviptv {
struct MessageAccess;
}

/// One entry of a CMessageBuffer.
struct MessageEntry
{
    std::string value; ///< value bytes, zero bytes included
    std::int32_t size; ///< number of value bytes, as declared when the entry was added
    std::string key;   ///< UTF-8 without zero bytes, or the message cannot travel
};

/// Ordered list of key/value entries: every request, reply and notification is one.
///
/// Values are byte strings with an explicit size; numbers travel as decimal text, records as their bytes.
/// Keys need not be unique: adding appends, looking up finds the first. The buffer owns copies of all that
/// it is given and is copied by value.
///
/// Threads: none of the operations locks; one buffer belongs to one thread at a time.
class ZVIPTV_API CMessageBuffer
{
public:
    /// An empty message.
    CMessageBuffer();

    /// Frees the entries.
    virtual ~CMessageBuffer();

    /// Copies all entries.
    CMessageBuffer(CMessageBuffer const&);

    /// Takes the entries over; the other message may be destroyed or assigned to.
    CMessageBuffer(CMessageBuffer&&) noexcept;

    /// Copies all entries in place of its own.
    CMessageBuffer& operator=(CMessageBuffer const&);

    /// Takes the entries over in place of its own.
    CMessageBuffer& operator=(CMessageBuffer&&) noexcept;

    /// Number of entries.
    int Size() const;

    /// Appends a text entry: the bytes of `value` without its terminating zero. Does nothing when `key` or
    /// `value` is null. Throws std::length_error for a text of 2 GiB or more.
    void AddValue(char const* key, char const* value);

    /// Appends `size` bytes starting at `value`, zero bytes included; a size of 0 appends an empty entry. The
    /// other end of a channel gets no empty entries: there the key is absent. Does nothing when `key` or
    /// `value` is null. Throws std::length_error for a negative size.
    void AddValue(char const* key, int size, char const* value);

    /// Copy of the first value under `key`; empty when the key is null or absent.
    std::string GetValue(char const* key) const;

    /// Copy of the value at `index`, 0 to Size() - 1; empty past the end. Not to be called with a negative
    /// index.
    std::string GetValue(int index) const;

    /// Copy of the key at `index`; empty past the end. Not to be called with a negative index.
    std::string GetKey(int index) const;

    /// Size in bytes of the value at `index`; -1 past the end. Not to be called with a negative index.
    int GetValueOfSize(int index) const;

    /// Appends `result` as decimal text under "result_internal". The first result set on a message is the one
    /// that counts.
    void SetResult(int result);

    /// The number under "result_internal". Throws std::invalid_argument ("stoi") when there is none and
    /// std::out_of_range ("stoi") when it is no 32-bit number.
    int GetResult() const;

private:
    friend struct zviptv::MessageAccess;

    std::vector<MessageEntry> m_entries;
    std::int32_t m_spare;
};
