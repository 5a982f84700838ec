// SPDX-License-Identifier: MIT
#include "proxy/ServiceCall.h"

#include "failure/LastFailure.h"
#include "message/MessageAccess.h"

#include <zviptv/Protocol.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace key = zviptv::protocol::key;

namespace zviptv {

namespace {

constexpr char UInt32[] = "an unsigned 32-bit decimal number";
constexpr char UInt64[] = "an unsigned 64-bit decimal number";

} // namespace

ReplyField::ReplyField(char const* key, int& number)
    : ReplyField(key, &number, Int32, [](std::string& value, void* target, std::size_t) {
          *static_cast<int*>(target) = std::stoi(value);
      })
{
}

// Sizes and indices are signed on the wire: -1 becomes the largest unsigned number.
ReplyField::ReplyField(char const* key, unsigned int& number)
    : ReplyField(key, &number, Int32, [](std::string& value, void* target, std::size_t) {
          *static_cast<unsigned int*>(target) = static_cast<unsigned int>(std::stoi(value));
      })
{
}

ReplyField::ReplyField(char const* key, unsigned long& number)
    : ReplyField(key, &number, sizeof(unsigned long) == 8 ? UInt64 : UInt32,
                 [](std::string& value, void* target, std::size_t) {
                     *static_cast<unsigned long*>(target) = std::stoul(value);
                 })
{
}

ReplyField::ReplyField(char const* key, unsigned long long& number)
    : ReplyField(key, &number, UInt64, [](std::string& value, void* target, std::size_t) {
          *static_cast<unsigned long long*>(target) = std::stoull(value);
      })
{
}

ReplyField::ReplyField(char const* key, bool& flag)
    : ReplyField(key, &flag, Int32, [](std::string& value, void* target, std::size_t) {
          *static_cast<bool*>(target) = std::stoi(value) != 0;
      })
{
}

ReplyField::ReplyField(char const* key, char& character)
    : ReplyField(key, &character, "a character", [](std::string& value, void* target, std::size_t) {
          *static_cast<char*>(target) = value.at(0);
      })
{
}

ReplyField::ReplyField(char const* key, std::string& text)
    : ReplyField(key, &text, "a text", [](std::string& value, void* target, std::size_t) {
          *static_cast<std::string*>(target) = std::move(value);
      })
{
}

void ReplyField::CopyRecord(std::string& value, void* target, std::size_t size)
{
    value.resize(size);
    std::memcpy(target, value.data(), size);
}

void ReplyField::Decode(std::string& value) const
{
    try {
        m_decode(value, m_target, m_size);
    } catch (std::logic_error const&) {
        SetMalformed(m_key, m_expected, value);
        throw;
    }
}

namespace {

template <typename Convert>
auto ReadNumber(CMessageBuffer const& message, char const* key, char const* expected, Convert convert)
{
    std::string const text = message.GetValue(key);
    try {
        return convert(text);
    } catch (std::logic_error const&) {
        SetMalformed(key, expected, text);
        throw;
    }
}

/// The end of every call that could not be sent.
bool LogUnsent(SourceLocation const& where)
{
    WriteLog(ZV_LOG_ERROR, where, "SendMessage failed.");
    return false;
}

void SetRefused()
{
    SetFailure(ZV_FAILURE_REFUSED, {"the service refused: it answered with the result 0"});
}

} // namespace

int ReadInt32(CMessageBuffer const& message, char const* key)
{
    return ReadNumber(message, key, Int32, [](std::string const& text) { return std::stoi(text); });
}

long long ReadInt64(CMessageBuffer const& message, char const* key)
{
    return ReadNumber(message, key, "a signed 64-bit decimal number",
                      [](std::string const& text) { return std::stoll(text); });
}

bool Exchange(std::shared_ptr<Session> const& session, char const* functionName, RequestFields fields,
              CMessageBuffer& reply, SourceLocation const& where, HandleID handleID)
{
    if (session == nullptr) {
        return RefuseWithoutSession(where);
    }
    CMessageBuffer request;
    MessageAccess::Reserve(request, fields.size() + 2);
    request.AddValue(key::FunctionName, functionName);
    if (session->Handle() && handleID == HandleID::Sent) {
        request.AddValue(key::HandleID, std::to_string(IPTVHandleNumber(*session->Handle())).c_str());
    }
    for (RequestField const& field : fields) {
        field.AddTo(request);
    }
    if (session->Channel().SendMessage(request, reply, 0) == 0) {
        session->ExplainFailure();
        return LogUnsent(where);
    }
    return true;
}

CallOutcome Call(std::shared_ptr<Session> const& session, char const* functionName, RequestFields fields,
                 ReplyFields outputs, SourceLocation const& where, HandleID handleID)
{
    FailureScope const scope(where.function);
    WriteLogEntry(where);
    CMessageBuffer reply;
    if (!Exchange(session, functionName, fields, reply, where, handleID)) {
        return CallOutcome::NotSent;
    }
    bool const isAccepted = ReadInt32(reply, key::Result) != 0;
    for (ReplyField const& output : outputs) {
        std::string value = MessageAccess::TakeValue(reply, output.Key());
        output.Decode(value);
    }
    if (!isAccepted) {
        SetRefused();
    }
    return isAccepted ? CallOutcome::Accepted : CallOutcome::Refused;
}

bool SendNotice(std::shared_ptr<Session> const& session, char const* functionName, RequestFields fields,
                SourceLocation const& where)
{
    CMessageBuffer reply;
    if (!Exchange(session, functionName, fields, reply, where)) {
        return false;
    }
    if (MessageAccess::TakeValue(reply, key::Result) == "0") {
        SetRefused();
    }
    return true;
}

bool RefuseWithoutSession(SourceLocation const& where)
{
    WriteLog(ZV_LOG_ERROR, where, "The object has been destroyed; create it again");
    SetGone();
    return LogUnsent(where);
}

} // namespace zviptv
