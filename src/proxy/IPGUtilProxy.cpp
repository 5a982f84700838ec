// SPDX-License-Identifier: MIT
#include "proxy/IPGUtilProxy.h"

#include "message/MessageAccess.h"

#include <zviptv/Protocol.h>

#include <json/value.h>

namespace function = zviptv::protocol::function;
namespace key = zviptv::protocol::key;

namespace {

/// The service id is a text, because it may not fit into a JSON number; the other members are numbers.
std::string ToJson(IPGProgramId const& id)
{
    Json::Value json;
    json[key::JsonServiceId] = std::to_string(id.serviceId);
    json[key::JsonEventId] = Json::Value::UInt(id.eventId);
    json[key::JsonStartTime] = Json::Value::UInt(id.startTime);
    json[key::JsonDuration] = Json::Value::UInt(id.duration);
    return json.toStyledString();
}

} // namespace

CIPGUtilProxy& CIPGUtilProxy::m_Only()
{
    static CIPGUtilProxy& only = *new CIPGUtilProxy;
    return only;
}

// The object is also made if the service does not run; its calls then fail.
CIPGUtilProxy* CIPGUtilProxy::Instance()
{
    ZV_LOG_ENTRY();
    CIPGUtilProxy& only = m_Only();
    auto const make = [] {
        auto session = std::make_shared<zviptv::Session>(zviptv::protocol::type::ProgramGuide);
        session->Connect(zviptv::SourceLocation::Here(__FILE__, "CIPGUtilProxy"));
        return session;
    };
    return zviptv::GetOrMakeSession(only.m_session, make) == nullptr ? nullptr : &only;
}

void CIPGUtilProxy::Destroy()
{
    zviptv::EndSession(m_Only().m_session);
}

template <typename Output>
bool CIPGUtilProxy::m_Query(char const* functionName, zviptv::RequestFields fields, Output& output,
                            zviptv::SourceLocation const& where)
{
    auto const session = m_session.Current();
    zviptv::WriteLogEntry(where);
    return m_Ask(session, functionName, fields, output, where);
}

template <typename Output>
bool CIPGUtilProxy::m_Ask(std::shared_ptr<zviptv::Session> const& session, char const* functionName,
                          zviptv::RequestFields fields, Output& output, zviptv::SourceLocation const& where)
{
    zviptv::FailureScope const scope(where.function);
    CMessageBuffer reply;
    if (!zviptv::Exchange(session, functionName, fields, reply, where)) {
        return false;
    }
    std::string data = zviptv::MessageAccess::TakeValue(reply, key::Data); // up to 32 MiB
    zviptv::WriteLog(ZV_LOG_INFO, where, "Receive data : %s", data.c_str());
    zviptv::ReplyField(key::Data, output).Decode(data);
    return true;
}

bool CIPGUtilProxy::ExistXmlForIPG(bool& exist)
{
    return m_Query(function::ExistXmlForIPG, {}, exist);
}

bool CIPGUtilProxy::GetProgramListSize(unsigned long long inID, unsigned int startTime, unsigned int duration,
                                       int& size)
{
    return m_Query(function::GetProgramListSize,
                   {{key::InID, inID}, {key::StartTime, startTime}, {key::Duration, duration}}, size);
}

bool CIPGUtilProxy::GetProgram(unsigned int index, std::string& program)
{
    return m_Query(function::GetProgram, {{key::Index, index}}, program);
}

bool CIPGUtilProxy::GetProgram(IPGProgramId id, Program_IPG program, std::string& out)
{
    auto const session = m_session.Current();
    ZV_LOG_ENTRY();
    std::string const json = ToJson(id);
    ZV_LOG_INFO_LINE("%s", json.c_str());
    return m_Ask(session, function::GetProgramIPG, {{key::InID, json}, {key::Program, program}}, out,
                 ZV_LOG_HERE);
}

bool CIPGUtilProxy::GetPresentProgram(unsigned long long inID, std::string& program)
{
    return m_Query(function::GetPresentProgram, {{key::InID, inID}}, program);
}

bool CIPGUtilProxy::FindProgram(unsigned long long inID, unsigned int eventID, std::string& program)
{
    return m_Query(function::FindProgram, {{key::InID, inID}, {key::EventID, eventID}}, program);
}

bool CIPGUtilProxy::GetRating(unsigned int eventID, std::string& rating)
{
    return m_Query(function::GetRating, {{key::EventID, eventID}}, rating);
}

bool CIPGUtilProxy::GetGenre(unsigned int eventID, std::string& genre)
{
    return m_Query(function::GetGenre, {{key::EventID, eventID}}, genre);
}

bool CIPGUtilProxy::GetProgramList(unsigned long long inID, unsigned int startTime, unsigned int duration,
                                   std::string& list)
{
    return m_Query(function::GetProgramList,
                   {{key::InID, inID}, {key::StartTime, startTime}, {key::Duration, duration}}, list);
}

bool CIPGUtilProxy::CloneUSBToTV(std::string path, bool& done)
{
    return m_Query(function::CloneUSBToTV, {{key::Path, path}}, done);
}
