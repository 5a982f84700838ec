// SPDX-License-Identifier: MIT
#include "proxy/PlayerControlProxy.h"

#include <zviptv/Protocol.h>

namespace function = zviptv::protocol::function;
namespace key = zviptv::protocol::key;
using zviptv::CallOutcome;

CPlayerControlProxy& CPlayerControlProxy::m_Only()
{
    static CPlayerControlProxy& only = *new CPlayerControlProxy;
    return only;
}

// The disconnect callback is set first, so that no loss is missed if another thread iterates the context.
CPlayerControlProxy* CPlayerControlProxy::Instance(IPTVHandle handle)
{
    ZV_LOG_ENTRY();
    CPlayerControlProxy& only = m_Only();
    auto const make = [handle, where = ZV_LOG_HERE]() -> std::shared_ptr<zviptv::Session> {
        if (!zviptv::IsServiceRunning(where)) {
            return nullptr;
        }
        auto session = std::make_shared<zviptv::Session>(zviptv::protocol::type::PlayerControl, handle);
        session->Channel().SetDisconnectNotiCB(m_DisconnectedCB, session->Identity());
        session->Connect(zviptv::SourceLocation::Here(__FILE__, "CPlayerControlProxy"));
        return session;
    };
    return zviptv::GetOrMakeSession(only.m_session, make) == nullptr ? nullptr : &only;
}

void CPlayerControlProxy::Destroy()
{
    zviptv::EndSession(m_Only().m_session);
}

void CPlayerControlProxy::m_DisconnectedCB(std::string /*partner*/, std::string /*own*/, void* user)
{
    ZV_LOG_INFO_LINE("Disconnencted CPlayerControlProxy");
    if (user != nullptr) {
        ZV_LOG_ERROR_LINE("Destroy CPlayerControlProxy");
        zviptv::EndLostSession(m_Only().m_session, user);
    }
}

bool CPlayerControlProxy::m_Call(char const* functionName, zviptv::RequestFields fields,
                                 zviptv::ReplyFields outputs, zviptv::SourceLocation const& where)
{
    return zviptv::Call(m_session.Current(), functionName, fields, outputs, where) == CallOutcome::Accepted;
}

bool CPlayerControlProxy::SetCurrentAudioByIndex(int index)
{
    return m_Call(function::SetCurrentAudioByIndex, {{key::Index, index}});
}

bool CPlayerControlProxy::SetAudioFormat(EZVAudioEncodeType type, bool preferred)
{
    return m_Call(function::SetAudioFormat, {{key::EncodeType, type}, {key::IsPreferred, preferred}});
}

bool CPlayerControlProxy::SetDigitalDualSound(EZVMultiSoundMode mode)
{
    return m_Call(function::SetDigitalDualSound, {{key::Mode, mode}});
}

bool CPlayerControlProxy::SetCurrentTTX(unsigned int index)
{
    return m_Call(function::SetCurrentTTX, {{key::Index, index}});
}

bool CPlayerControlProxy::SetCurrentHybridSBT(unsigned int index)
{
    return m_Call(function::SetCurrentHybridSBT, {{key::Index, index}});
}

bool CPlayerControlProxy::GetSTCCount(unsigned long long& stc)
{
    return m_Call(function::GetSTCCount, {}, {{key::STCCount, stc}});
}

bool CPlayerControlProxy::SetCurrentISDBText(EZVISDBTextType type, int index)
{
    return m_Call(function::SetCurrentISDBText, {{key::Mode, type}, {key::Index, index}});
}

bool CPlayerControlProxy::SetCurrentISDBTextService(EZVISDBTextType type, int compTag)
{
    return m_Call(function::SetCurrentISDBTextService, {{key::Mode, type}, {key::CompTag, compTag}});
}

bool CPlayerControlProxy::GetCaptionDataMode(EZVCaptionDataMode& mode)
{
    mode = ZV_CAPTION_DATA_MODE_UNKNOWN;
    CallOutcome const outcome =
        zviptv::Call(m_session.Current(), function::GetCaptionDataMode, {}, {{key::Mode, mode}}, ZV_LOG_HERE);
    if (outcome != CallOutcome::NotSent) {
        ZV_LOG_ERROR_LINE("GetCaptionDataMode, retVal:%d", outcome == CallOutcome::Accepted ? 1 : 0);
    }
    return outcome == CallOutcome::Accepted;
}

bool CPlayerControlProxy::GetDefaultCaptionService(EZVCaptionService& service)
{
    service = ZV_CAPTION_SERVICE_UNKNOWN;
    CallOutcome const outcome = zviptv::Call(m_session.Current(), function::GetDefaultCaptionService, {},
                                             {{key::Service, service}}, ZV_LOG_HERE);
    if (outcome != CallOutcome::NotSent) {
        ZV_LOG_ERROR_LINE("GetDefaultCaptionService, retVal:%d", outcome == CallOutcome::Accepted ? 1 : 0);
    }
    return outcome == CallOutcome::Accepted;
}

bool CPlayerControlProxy::MuteAudio(bool on)
{
    return m_Call(function::MuteAudio, {{key::OnOff, on}});
}

bool CPlayerControlProxy::MuteVideo(bool on)
{
    return m_Call(function::MuteVideo, {{key::OnOff, on}});
}

bool CPlayerControlProxy::GetResolution(cvtv_resolution_e& res, ZVResolution& info)
{
    res = CVTV_RESOLUTION_UNKNOWN;
    return m_Call(function::GetResolution, {}, {{key::Resolution, res}, {key::ResolutionInfo, info}});
}

bool CPlayerControlProxy::SetAppID(char const* appId)
{
    return zviptv::Call(m_session.Current(), function::SetAppID, {{key::AppID, appId}}, {}, ZV_LOG_HERE,
                        zviptv::HandleID::LeftOut) == CallOutcome::Accepted;
}

bool CPlayerControlProxy::GetSourceState(EZVSourceState& state)
{
    state = ZV_SOURCE_STATE_UNKNOWN;
    return m_Call(function::GetSourceState, {}, {{key::SourceState, state}});
}

bool CPlayerControlProxy::GetFirstPTS(unsigned long long& pts, int& a, int& b, unsigned long& now)
{
    pts = 0;
    a = 0;
    b = 0;
    now = 0;
    return m_Call(
        function::GetFirstPTS, {},
        {{key::FirstPTS, pts}, {key::TimeBaseDen, a}, {key::TimeBaseNum, b}, {key::CurrentTime, now}});
}
