#pragma once

#include "proxy/ServiceCall.h"

#include <zviptv/IPlayerControl.h>
#include <zviptv/ProxyDBusHelper.h>

#include <pthread.h>

#include <memory>
#include <string>

class CPlayerControlProxy final : public IPlayerControl
{
public:
    static CPlayerControlProxy* Instance(IPTVHandle handle);
    static void Destroy();

    ~CPlayerControlProxy() override;

    bool SetCurrentAudioByIndex(int index) override;
    bool SetAudioFormat(EZVAudioEncodeType type, bool preferred) override;
    bool SetDigitalDualSound(EZVMultiSoundMode mode) override;
    bool SetCurrentTTX(unsigned int index) override;
    bool SetCurrentHybridSBT(unsigned int index) override;
    bool GetSTCCount(unsigned long long& stc) override;
    bool SetCurrentISDBText(EZVISDBTextType type, int index) override;
    bool SetCurrentISDBTextService(EZVISDBTextType type, int compTag) override;
    bool GetCaptionDataMode(EZVCaptionDataMode& mode) override;
    bool GetDefaultCaptionService(EZVCaptionService& service) override;
    bool MuteAudio(bool on) override;
    bool MuteVideo(bool on) override;
    bool GetResolution(cvtv_resolution_e& res, ZVResolution& info) override;
    bool SetAppID(char const* appId) override;
    bool GetSourceState(EZVSourceState& state) override;
    bool GetFirstPTS(unsigned long long& pts, int& a, int& b, unsigned long& now) override;

    CProxyDBusHelper const& Channel() const { return *m_pDBusHelper; }

private:
    CPlayerControlProxy();

    static void m_DisconnectedCB(std::string partner, std::string own, void* user);

    bool m_Call(char const* functionName, zviptv::RequestFields fields, zviptv::ReplyFields outputs = {},
                zviptv::SourceLocation const& where = zviptv::SourceLocation::Here());

    static CPlayerControlProxy* m_PCInstance;
    static pthread_rwlock_t m_PCProxyLock;
    static IPTVHandle m_handleID;

    std::unique_ptr<CProxyDBusHelper> m_pDBusHelper;
};
