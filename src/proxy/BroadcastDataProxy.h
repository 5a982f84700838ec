#pragma once

#include "proxy/ServiceCall.h"

#include <zviptv/IBroadcastData.h>
#include <zviptv/ProxyDBusHelper.h>

#include <pthread.h>

#include <memory>
#include <string>

class CBroadcastDataProxy final : public IBroadcastData
{
public:
    static CBroadcastDataProxy* Instance(IPTVHandle handle);
    static void Destroy();

    ~CBroadcastDataProxy() override;

    bool GetAudioFormat(EZVAudioEncodeType& encodeType) override;
    bool GetDigitalDualSound(ZVDualSound& currentMode, ZVDualSound& nextMode) override;
    bool GetCurrentAudioInfo(EZVLanguageCode& language, int& index) override;
    bool SizeOfAudio(unsigned int& size) override;
    bool GetAudio(unsigned int index, ZVAudio& audio) override;
    bool SizeOfTTX(unsigned int& size) override;
    bool GetTTX(unsigned int index, ZVTTX& ttx) override;
    bool GetCurrentTTX(EZVLanguageCode& language, unsigned int& index) override;
    bool SizeOfHybridSBT(unsigned int& size) override;
    bool GetHybridSBT(unsigned int index, EZVLanguageCode& language, ZVHybridSBT& subtitle) override;
    bool CheckHardOfHearingSBT(bool& exists) override;
    bool GetPreferredHybridSBT(EZVLanguageCode& language, ZVHybridSBT& subtitle) override;
    bool GetCurrentHybridSBT(EZVLanguageCode& language, unsigned int& index) override;
    bool GetPreferredTTXSubtitle(ZVTTX& ttx) override;
    bool SizeOfISDBText(EZVISDBTextType type, unsigned int& size) override;
    bool GetISDBText(EZVISDBTextType type, unsigned int index, ZVISDBText& text) override;
    bool GetCurrentISDBText(EZVISDBTextType type, EZVLanguageCode& language, unsigned int& index) override;
    bool GetCaptionLanguage(EZVCaptionService service, EZVLanguageCode& language, char& koreanCode) override;
    bool GetRatingInfo(std::vector<ZVRatingInfo>& ratings) override;
    bool SetUnlockedInfo(EZVParentalLock lock) override;
    bool GetRatingLockState(bool& locked) override;
    bool UnMuteByRatingPin() override;
    bool SetUnlockedInfoWhenFactoryMode(bool unlocked) override;
    bool FlagServiceLocked(bool& locked) override;

    CProxyDBusHelper const& Channel() const { return *m_pDBusHelper; }

private:
    CBroadcastDataProxy();

    static void m_DisconnectedCB(std::string partner, std::string own, void* user);

    bool m_Call(char const* functionName, zviptv::RequestFields fields, zviptv::ReplyFields outputs = {},
                zviptv::SourceLocation const& where = zviptv::SourceLocation::Here());

    static CBroadcastDataProxy* m_pBDProxyInstance;
    static pthread_rwlock_t m_BDProxyLock;
    static IPTVHandle m_handleID;

    std::unique_ptr<CProxyDBusHelper> m_pDBusHelper;
};
