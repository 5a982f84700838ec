#include "proxy/PlayerControlProxy.h"

#include "proxy/ProxyLifecycle.h"

#include <zviptv/Protocol.h>

namespace function = zviptv::protocol::function;
namespace key = zviptv::protocol::key;
using zviptv::CallOutcome;

namespace {
constexpr char const* TypeWord = zviptv::protocol::type::PlayerControl;
}

CPlayerControlProxy* CPlayerControlProxy::m_PCInstance = nullptr;
pthread_rwlock_t CPlayerControlProxy::m_PCProxyLock = PTHREAD_RWLOCK_INITIALIZER;
IPTVHandle CPlayerControlProxy::m_handleID = {IPTV_PROFILE_DEFAULT, 0};

CPlayerControlProxy* CPlayerControlProxy::Instance(IPTVHandle handle)
{
    ZV_LOG_ENTRY();
    return zviptv::GetOrCreateInstance(m_PCProxyLock, m_PCInstance, [handle, where = ZV_LOG_HERE] {
        if (zviptv::IsServiceRunning(where)) {
            m_PCInstance = new CPlayerControlProxy;
            m_handleID = handle;
        }
    });
}

void CPlayerControlProxy::Destroy()
{
    zviptv::DestroyProxy(m_PCProxyLock, m_PCInstance);
}

// The disconnect callback is set first, so that no loss is missed while another thread iterates the context.
CPlayerControlProxy::CPlayerControlProxy() : m_pDBusHelper(std::make_unique<CProxyDBusHelper>(TypeWord))
{
    m_pDBusHelper->SetDisconnectNotiCB(m_DisconnectedCB, this);
    zviptv::ConnectToService(*m_pDBusHelper, TypeWord, ZV_LOG_HERE);
}

CPlayerControlProxy::~CPlayerControlProxy()
{
    zviptv::LeaveService(m_pDBusHelper, TypeWord);
}

void CPlayerControlProxy::m_DisconnectedCB(std::string /*partner*/, std::string /*own*/, void* user)
{
    ZV_LOG_INFO_LINE("Disconnencted CPlayerControlProxy");
    if (user != nullptr) {
        ZV_LOG_ERROR_LINE("Destroy CPlayerControlProxy");
        Destroy();
    }
}

bool CPlayerControlProxy::m_Call(char const* functionName, zviptv::RequestFields fields,
                                 zviptv::ReplyFields outputs, zviptv::SourceLocation const& where)
{
    return zviptv::Call(*m_pDBusHelper, functionName, &m_handleID, fields, outputs, where) ==
           CallOutcome::Accepted;
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
    CallOutcome const outcome = zviptv::Call(*m_pDBusHelper, function::GetCaptionDataMode, &m_handleID, {},
                                             {{key::Mode, mode}}, ZV_LOG_HERE);
    if (outcome != CallOutcome::NotSent) {
        ZV_LOG_ERROR_LINE("GetCaptionDataMode, retVal:%d", outcome == CallOutcome::Accepted ? 1 : 0);
    }
    return outcome == CallOutcome::Accepted;
}

bool CPlayerControlProxy::GetDefaultCaptionService(EZVCaptionService& service)
{
    service = ZV_CAPTION_SERVICE_UNKNOWN;
    CallOutcome const outcome = zviptv::Call(*m_pDBusHelper, function::GetDefaultCaptionService, &m_handleID,
                                             {}, {{key::Service, service}}, ZV_LOG_HERE);
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
    return zviptv::Call(*m_pDBusHelper, function::SetAppID, nullptr, {{key::AppID, appId}}, {},
                        ZV_LOG_HERE) == CallOutcome::Accepted;
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
