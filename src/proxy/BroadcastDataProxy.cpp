// SPDX-License-Identifier: MIT
#include "proxy/BroadcastDataProxy.h"

#include "proxy/AnnouncedSize.h"

#include <zviptv/Protocol.h>

namespace function = zviptv::protocol::function;
namespace key = zviptv::protocol::key;
using zviptv::CallOutcome;

CBroadcastDataProxy& CBroadcastDataProxy::m_Only()
{
    static CBroadcastDataProxy& only = *new CBroadcastDataProxy;
    return only;
}

// The disconnect callback is set first, so that no loss is missed if another thread iterates the context.
CBroadcastDataProxy* CBroadcastDataProxy::Instance(IPTVHandle handle)
{
    ZV_LOG_ENTRY();
    CBroadcastDataProxy& only = m_Only();
    auto const make = [handle, where = ZV_LOG_HERE]() -> std::shared_ptr<zviptv::Session> {
        if (!zviptv::IsServiceRunning(where)) {
            return nullptr;
        }
        auto session = std::make_shared<zviptv::Session>(zviptv::protocol::type::BroadcastData, handle);
        session->Channel().SetDisconnectNotiCB(m_DisconnectedCB, session->Identity());
        session->Connect(zviptv::SourceLocation::Here(__FILE__, "CBroadcastDataProxy"));
        return session;
    };
    return zviptv::GetOrMakeSession(only.m_session, make) == nullptr ? nullptr : &only;
}

void CBroadcastDataProxy::Destroy()
{
    zviptv::EndSession(m_Only().m_session);
}

void CBroadcastDataProxy::m_DisconnectedCB(std::string /*partner*/, std::string /*own*/, void* user)
{
    ZV_LOG_INFO_LINE("Disconnencted CBroadcastDataProxy");
    if (user != nullptr) {
        ZV_LOG_ERROR_LINE("Destroy CBroadcastDataProxy");
        zviptv::EndLostSession(m_Only().m_session, user);
    }
}

bool CBroadcastDataProxy::m_Call(char const* functionName, zviptv::RequestFields fields,
                                 zviptv::ReplyFields outputs, zviptv::SourceLocation const& where)
{
    return zviptv::Call(m_session.Current(), functionName, fields, outputs, where) == CallOutcome::Accepted;
}

bool CBroadcastDataProxy::GetAudioFormat(EZVAudioEncodeType& encodeType)
{
    return m_Call(function::GetAudioFormat, {}, {{key::EncodeType, encodeType}});
}

bool CBroadcastDataProxy::GetDigitalDualSound(ZVDualSound& currentMode, ZVDualSound& nextMode)
{
    return m_Call(function::GetDigitalDualSound, {},
                  {{key::CurrentMode, currentMode}, {key::NextMode, nextMode}});
}

bool CBroadcastDataProxy::GetCurrentAudioInfo(EZVLanguageCode& language, int& index)
{
    return m_Call(function::GetCurrentAudioInfo, {}, {{key::LandCode, language}, {key::Index, index}});
}

bool CBroadcastDataProxy::SizeOfAudio(unsigned int& size)
{
    return m_Call(function::SizeOfAudio, {}, {{key::Size, size}});
}

bool CBroadcastDataProxy::GetAudio(unsigned int index, ZVAudio& audio)
{
    return m_Call(function::GetAudio, {{key::Index, index}}, {{key::Audio, audio}});
}

bool CBroadcastDataProxy::SizeOfTTX(unsigned int& size)
{
    return m_Call(function::SizeOfTTX, {}, {{key::Size, size}});
}

bool CBroadcastDataProxy::GetTTX(unsigned int index, ZVTTX& ttx)
{
    return m_Call(function::GetTTX, {{key::Index, index}}, {{key::Ttx, ttx}});
}

bool CBroadcastDataProxy::GetCurrentTTX(EZVLanguageCode& language, unsigned int& index)
{
    return m_Call(function::GetCurrentTTX, {}, {{key::LandCode, language}, {key::Index, index}});
}

bool CBroadcastDataProxy::SizeOfHybridSBT(unsigned int& size)
{
    return m_Call(function::SizeOfHybridSBT, {}, {{key::Size, size}});
}

bool CBroadcastDataProxy::GetHybridSBT(unsigned int index, EZVLanguageCode& language, ZVHybridSBT& subtitle)
{
    return m_Call(function::GetHybridSBT, {{key::Index, index}},
                  {{key::LandCode, language}, {key::HybridSbt, subtitle}});
}

bool CBroadcastDataProxy::CheckHardOfHearingSBT(bool& exists)
{
    return m_Call(function::CheckHardOfHearingSBT, {}, {{key::Exists, exists}});
}

bool CBroadcastDataProxy::GetPreferredHybridSBT(EZVLanguageCode& language, ZVHybridSBT& subtitle)
{
    return m_Call(function::GetPreferredHybridSBT, {},
                  {{key::LandCode, language}, {key::HybridSbt, subtitle}});
}

bool CBroadcastDataProxy::GetCurrentHybridSBT(EZVLanguageCode& language, unsigned int& index)
{
    return m_Call(function::GetCurrentHybridSBT, {}, {{key::LandCode, language}, {key::Index, index}});
}

bool CBroadcastDataProxy::GetPreferredTTXSubtitle(ZVTTX& ttx)
{
    return m_Call(function::GetPreferredTTXSubtitle, {}, {{key::TtxSubtitle, ttx}});
}

bool CBroadcastDataProxy::SizeOfISDBText(EZVISDBTextType type, unsigned int& size)
{
    return m_Call(function::SizeOfISDBText, {{key::Mode, type}}, {{key::Size, size}});
}

bool CBroadcastDataProxy::GetISDBText(EZVISDBTextType type, unsigned int index, ZVISDBText& text)
{
    return m_Call(function::GetISDBText, {{key::Mode, type}, {key::Index, index}}, {{key::IsdbText, text}});
}

bool CBroadcastDataProxy::GetCurrentISDBText(EZVISDBTextType type, EZVLanguageCode& language,
                                             unsigned int& index)
{
    return m_Call(function::GetCurrentISDBText, {{key::Mode, type}},
                  {{key::LandCode, language}, {key::Index, index}});
}

bool CBroadcastDataProxy::GetCaptionLanguage(EZVCaptionService service, EZVLanguageCode& language,
                                             char& koreanCode)
{
    return m_Call(function::GetCaptionLanguage, {{key::Service, service}},
                  {{key::LandCode, language}, {key::KoreanCode, koreanCode}});
}

bool CBroadcastDataProxy::GetRatingInfo(std::vector<ZVRatingInfo>& ratings)
{
    int count = 0;
    std::string records;
    CallOutcome const outcome =
        zviptv::Call(m_session.Current(), function::GetRatingInfo, {},
                     {{key::RatingInfoSize, count}, {key::RatingInfo, records}}, ZV_LOG_HERE);
    if (outcome != CallOutcome::NotSent) {
        zviptv::TakeAnnounced(ratings, count, records, key::RatingInfoSize);
    }
    return outcome == CallOutcome::Accepted;
}

bool CBroadcastDataProxy::SetUnlockedInfo(EZVParentalLock lock)
{
    return m_Call(function::SetUnlockedInfo, {{key::RatingInfo, lock}});
}

bool CBroadcastDataProxy::GetRatingLockState(bool& locked)
{
    return m_Call(function::GetRatingLockState, {}, {{key::LockState, locked}});
}

bool CBroadcastDataProxy::UnMuteByRatingPin()
{
    return m_Call(function::UnMuteByRatingPin, {});
}

bool CBroadcastDataProxy::SetUnlockedInfoWhenFactoryMode(bool unlocked)
{
    return m_Call(function::SetUnlockedInfoWhenFactoryMode, {{key::LockState, unlocked}});
}

bool CBroadcastDataProxy::FlagServiceLocked(bool& locked)
{
    return m_Call(function::FlagServiceLocked, {}, {{key::OutServiceLocked, locked}});
}
