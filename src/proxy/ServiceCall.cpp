// SPDX-License-Identifier: MIT
#include "proxy/ServiceCall.h"

#include "message/MessageAccess.h"

#include <zviptv/Protocol.h>

#include <algorithm>
#include <cstring>

namespace key = zviptv::protocol::key;

namespace zviptv {

ReplyField::ReplyField(char const* key, int& number)
    : ReplyField(key, &number, [](std::string& value, void* target, std::size_t) {
          *static_cast<int*>(target) = std::stoi(value);
      })
{
}

// Sizes and indices are signed on the wire: -1 arrives as the largest unsigned number.
ReplyField::ReplyField(char const* key, unsigned int& number)
    : ReplyField(key, &number, [](std::string& value, void* target, std::size_t) {
          *static_cast<unsigned int*>(target) = static_cast<unsigned int>(std::stoi(value));
      })
{
}

ReplyField::ReplyField(char const* key, unsigned long& number)
    : ReplyField(key, &number, [](std::string& value, void* target, std::size_t) {
          *static_cast<unsigned long*>(target) = std::stoul(value);
      })
{
}

ReplyField::ReplyField(char const* key, unsigned long long& number)
    : ReplyField(key, &number, [](std::string& value, void* target, std::size_t) {
          *static_cast<unsigned long long*>(target) = std::stoull(value);
      })
{
}

ReplyField::ReplyField(char const* key, bool& flag)
    : ReplyField(key, &flag, [](std::string& value, void* target, std::size_t) {
          *static_cast<bool*>(target) = std::stoi(value) != 0;
      })
{
}

ReplyField::ReplyField(char const* key, char& character)
    : ReplyField(key, &character, [](std::string& value, void* target, std::size_t) {
          *static_cast<char*>(target) = value.at(0);
      })
{
}

ReplyField::ReplyField(char const* key, std::string& text)
    : ReplyField(key, &text, [](std::string& value, void* target, std::size_t) {
          *static_cast<std::string*>(target) = std::move(value);
      })
{
}

void ReplyField::CopyRecord(std::string& value, void* target, std::size_t size)
{
    value.resize(size);
    std::memcpy(target, value.data(), size);
}

namespace {

/// Where every call ends that could not be sent.
bool RefuseUnsent(SourceLocation const& where)
{
    WriteLog(ZV_LOG_ERROR, where, "SendMessage failed.");
    return false;
}

} // namespace

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
        return RefuseUnsent(where);
    }
    return true;
}

CallOutcome Call(std::shared_ptr<Session> const& session, char const* functionName, RequestFields fields,
                 ReplyFields outputs, SourceLocation const& where, HandleID handleID)
{
    WriteLogEntry(where);
    CMessageBuffer reply;
    if (!Exchange(session, functionName, fields, reply, where, handleID)) {
        return CallOutcome::NotSent;
    }
    CallOutcome const outcome = reply.GetResult() != 0 ? CallOutcome::Accepted : CallOutcome::Refused;
    for (ReplyField const& output : outputs) {
        std::string value = MessageAccess::TakeValue(reply, output.Key());
        output.Decode(value);
    }
    return outcome;
}

bool RefuseWithoutSession(SourceLocation const& where)
{
    WriteLog(ZV_LOG_ERROR, where, "The object has been destroyed; create it again");
    return RefuseUnsent(where);
}

} // namespace zviptv
