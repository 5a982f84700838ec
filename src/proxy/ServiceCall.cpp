#include "proxy/ServiceCall.h"

#include "message/MessageAccess.h"

#include <zviptv/Protocol.h>
#include <zviptv/ProxyDBusHelper.h>

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

bool Exchange(CProxyDBusHelper& channel, char const* functionName, IPTVHandle const* handle,
              RequestFields fields, CMessageBuffer& reply, SourceLocation const& where)
{
    CMessageBuffer request;
    MessageAccess::Reserve(request, fields.size() + 2);
    request.AddValue(key::FunctionName, functionName);
    if (handle != nullptr) {
        request.AddValue(key::HandleID, std::to_string(IPTVHandleNumber(*handle)).c_str());
    }
    for (RequestField const& field : fields) {
        field.AddTo(request);
    }
    if (channel.SendMessage(request, reply, 0) == 0) {
        WriteLog(ZV_LOG_ERROR, where, "SendMessage failed.");
        return false;
    }
    return true;
}

CallOutcome Call(CProxyDBusHelper& channel, char const* functionName, IPTVHandle const* handle,
                 RequestFields fields, ReplyFields outputs, SourceLocation const& where)
{
    WriteLogEntry(where);
    CMessageBuffer reply;
    if (!Exchange(channel, functionName, handle, fields, reply, where)) {
        return CallOutcome::NotSent;
    }
    CallOutcome const outcome = reply.GetResult() != 0 ? CallOutcome::Accepted : CallOutcome::Refused;
    for (ReplyField const& output : outputs) {
        std::string value = MessageAccess::TakeValue(reply, output.Key());
        output.Decode(value);
    }
    return outcome;
}

} // namespace zviptv
