// SPDX-License-Identifier: MIT
#pragma once

#include "ClientRecords.h"

#include <zviptv/MessageBuffer.h>
#include <zviptv/client/Language.h>
#include <zviptv/client/Programme.h>
#include <zviptv/client/Result.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace zviptv::client {

/// Reads the values of a reply. The first one that cannot be read makes the whole reply a failure.
class Reply
{
public:
    Reply(CMessageBuffer const& message, char const* function) : m_message(message), m_function(function) {}

    /// The result 0 means that the service refused.
    void CheckResult();

    template <class Value>
    void Read(char const* key, Value& value)
    {
        if (m_failure) {
            return;
        }
        if constexpr (std::is_enum_v<Value>) {
            value = static_cast<Value>(ReadInt32(key));
        } else {
            value = {};
            ReadRecord(RecordBytes(m_message.GetView(key)), value);
        }
    }
    void Read(char const* key, bool& flag) { flag = ReadInt32(key) != 0; }
    void Read(char const* key, std::int32_t& number) { number = ReadInt32(key); }
    void Read(char const* key, std::uint64_t& number) { number = ReadUInt64(key); }
    void Read(char const* key, char& character);
    void Read(char const* key, Language& language) { language = Language::FromNumber(ReadInt32(key)); }
    void Read(char const* key, std::chrono::milliseconds& time);
    void Read(char const* key, std::optional<Programme>& programme);
    void Read(char const* key, std::optional<ProgrammeRating>& rating);
    void Read(char const* key, std::vector<std::string>& texts);
    void Read(char const* key, std::vector<Programme>& programmes);

    /// Records, one after another. An incomplete record at the end is omitted.
    template <class Record>
    void Read(char const* key, std::vector<Record>& records)
    {
        std::string_view bytes = m_failure ? std::string_view() : m_message.GetView(key);
        for (std::size_t const size = RecordSize<Record>; bytes.size() >= size; bytes.remove_prefix(size)) {
            ReadRecord(RecordBytes(bytes.substr(0, size)), records.emplace_back());
        }
    }

    Result<void> Done() const { return m_failure ? Result<void>(*m_failure) : Result<void>(); }
    template <class Value>
    Result<Value> Done(Value value) const
    {
        return m_failure ? Result<Value>(*m_failure) : Result<Value>(std::move(value));
    }

private:
    std::int32_t ReadInt32(char const* key);
    std::uint64_t ReadUInt64(char const* key);
    void SetMalformed(char const* key, std::string_view expected);
    template <class Value>
    void ReadJson(char const* key, Value& value, char const* expected);

    CMessageBuffer const& m_message;
    char const* m_function;
    std::optional<Failure> m_failure;
};

} // namespace zviptv::client
