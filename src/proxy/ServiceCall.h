// SPDX-License-Identifier: MIT
#pragma once

#include "log/Log.h"
#include "proxy/Session.h"

#include <zviptv/IPTVTypes.h>
#include <zviptv/MessageBuffer.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>

namespace zviptv {

/// The text for the expected value of an int in a reply.
constexpr char Int32[] = "a signed 32-bit decimal number";

/// One argument of a request: numbers as decimal text, texts unchanged. A null text is left out.
class RequestField
{
public:
    RequestField(char const* key, char const* text)
        : m_key(key), m_isPresent(text != nullptr), m_value(text == nullptr ? "" : text)
    {
    }
    RequestField(char const* key, std::string const& text) : RequestField(key, text.c_str()) {}
    template <typename Number,
              typename = std::enable_if_t<std::is_arithmetic_v<Number> || std::is_enum_v<Number>>>
    RequestField(char const* key, Number number) : m_key(key), m_isPresent(true), m_value(ToText(number))
    {
    }

    void AddTo(CMessageBuffer& request) const
    {
        if (m_isPresent) {
            request.AddValue(m_key, m_value.c_str());
        }
    }

private:
    template <typename Number>
    static std::string ToText(Number number)
    {
        if constexpr (std::is_enum_v<Number>) {
            return std::to_string(static_cast<int>(number));
        } else {
            return std::to_string(number);
        }
    }

    char const* m_key;
    bool m_isPresent;
    std::string m_value;
};

/// One out-parameter of a reply: the place for the value of a key, which is decoded by the parameter's type.
/// Numbers throw the exceptions of the standard conversions; a record gets its bytes and is filled up with
/// zeros.
class ReplyField
{
public:
    ReplyField(char const* key, int& number);
    ReplyField(char const* key, unsigned int& number);
    ReplyField(char const* key, unsigned long& number);
    ReplyField(char const* key, unsigned long long& number);
    ReplyField(char const* key, bool& flag);
    ReplyField(char const* key, char& character);
    ReplyField(char const* key, std::string& text);

    template <typename Enumeration, std::enable_if_t<std::is_enum_v<Enumeration>, int> = 0>
    ReplyField(char const* key, Enumeration& enumeration)
        : ReplyField(key, &enumeration, Int32, [](std::string& value, void* target, std::size_t) {
              *static_cast<Enumeration*>(target) = static_cast<Enumeration>(std::stoi(value));
          })
    {
    }

    template <typename Record, std::enable_if_t<std::is_class_v<Record>, int> = 0>
    ReplyField(char const* key, Record& record)
        : ReplyField(key, &record, "a record", CopyRecord, sizeof(Record))
    {
        static_assert(std::is_trivially_copyable_v<Record>);
    }

    char const* Key() const { return m_key; }

    /// Decodes `value`, which may be moved from, into the out-parameter. If it throws, it also sets the
    /// calling thread's failure.
    void Decode(std::string& value) const;

private:
    using Decoder = void (*)(std::string& value, void* target, std::size_t size);

    ReplyField(char const* key, void* target, char const* expected, Decoder decode, std::size_t size = 0)
        : m_key(key), m_target(target), m_expected(expected), m_decode(decode), m_size(size)
    {
    }

    static void CopyRecord(std::string& value, void* target, std::size_t size);

    char const* m_key;
    void* m_target;
    char const* m_expected;
    Decoder m_decode;
    std::size_t m_size;
};

using RequestFields = std::initializer_list<RequestField>;
using ReplyFields = std::initializer_list<ReplyField>;

/// The number under `key`. Throws like std::stoi, and then also sets the calling thread's failure.
int ReadInt32(CMessageBuffer const& message, char const* key);
/// The same with std::stoll.
long long ReadInt64(CMessageBuffer const& message, char const* key);

/// The outcome of a call.
enum class CallOutcome
{
    NotSent, ///< the exchange failed
    Refused, ///< the service answered with the result 0
    Accepted ///< the service answered with another result
};

/// Whether a request has the key "handleID", if the session has a handle.
enum class HandleID
{
    Sent,
    LeftOut
};

/// Sends a request to the service; every proxy method uses it. Builds the request ("functionname",
/// "handleID", the fields in order) and makes a synchronous exchange. If the exchange fails or there is no
/// session, it returns false, logs a line, and sets the calling thread's failure.
bool Exchange(std::shared_ptr<Session> const& session, char const* functionName, RequestFields fields,
              CMessageBuffer& reply, SourceLocation const& where, HandleID handleID = HandleID::Sent);

/// Logs the entry line, and makes an exchange whose reply has a result and, whatever the result, the values
/// of `outputs`. It is one of the library's functions, whose name is in `where`.
CallOutcome Call(std::shared_ptr<Session> const& session, char const* functionName, RequestFields fields,
                 ReplyFields outputs, SourceLocation const& where, HandleID handleID = HandleID::Sent);

/// Makes an exchange that succeeds whatever the service answers: a result of 0 only sets the calling thread's
/// failure.
bool SendNotice(std::shared_ptr<Session> const& session, char const* functionName, RequestFields fields,
                SourceLocation const& where);

/// Logs why a call on an object without a session is refused, and sets the calling thread's failure. Returns
/// false, the result of the call.
bool RefuseWithoutSession(SourceLocation const& where);

} // namespace zviptv
