#pragma once

#include <zviptv/IPTVTypes.h>

#include <tuple>

namespace zviptv::ctl {

/// How people write a number.
enum class Notation
{
    Plain,
    Hexadecimal ///< identifiers that the standards write so: 0x0101, with the digits that the type has
};

template <typename Record, typename Member>
struct Field
{
    char const* name;
    Member Record::*member;
    Notation notation = Notation::Plain;
};

template <typename Record, typename Member>
Field(char const*, Member Record::*) -> Field<Record, Member>;
template <typename Record, typename Member>
Field(char const*, Member Record::*, Notation) -> Field<Record, Member>;

/// The fields of a record that mean something, in declaration order.
template <typename Record>
struct RecordInfo;

template <>
struct RecordInfo<ZVAudio>
{
    static constexpr char const* type = "ZVAudio";
    static constexpr auto fields =
        std::make_tuple(Field{"language", &ZVAudio::language}, Field{"encoding", &ZVAudio::encoding},
                        Field{"pid", &ZVAudio::pid, Notation::Hexadecimal},
                        Field{"componentTag", &ZVAudio::componentTag, Notation::Hexadecimal},
                        Field{"audioType", &ZVAudio::audioType}, Field{"sampleRate", &ZVAudio::sampleRate},
                        Field{"bitRate", &ZVAudio::bitRate}, Field{"channels", &ZVAudio::channels},
                        Field{"dualMono", &ZVAudio::dualMono},
                        Field{"streamType", &ZVAudio::streamType, Notation::Hexadecimal});
};

template <>
struct RecordInfo<ZVTTX>
{
    static constexpr char const* type = "ZVTTX";
    static constexpr auto fields = std::make_tuple(
        Field{"language", &ZVTTX::language}, Field{"pid", &ZVTTX::pid, Notation::Hexadecimal},
        Field{"magazine", &ZVTTX::magazine}, Field{"page", &ZVTTX::page, Notation::Hexadecimal},
        Field{"type", &ZVTTX::type}, Field{"componentTag", &ZVTTX::componentTag, Notation::Hexadecimal});
};

template <>
struct RecordInfo<ZVHybridSBT>
{
    static constexpr char const* type = "ZVHybridSBT";
    static constexpr auto fields = std::make_tuple(
        Field{"language", &ZVHybridSBT::language}, Field{"kind", &ZVHybridSBT::kind},
        Field{"pid", &ZVHybridSBT::pid, Notation::Hexadecimal},
        Field{"compositionPage", &ZVHybridSBT::compositionPage},
        Field{"ancillaryPage", &ZVHybridSBT::ancillaryPage},
        Field{"type", &ZVHybridSBT::type, Notation::Hexadecimal},
        Field{"hardOfHearing", &ZVHybridSBT::hardOfHearing}, Field{"magazine", &ZVHybridSBT::magazine},
        Field{"page", &ZVHybridSBT::page, Notation::Hexadecimal},
        Field{"componentTag", &ZVHybridSBT::componentTag, Notation::Hexadecimal});
};

template <>
struct RecordInfo<ZVISDBText>
{
    static constexpr char const* type = "ZVISDBText";
    static constexpr auto fields =
        std::make_tuple(Field{"language", &ZVISDBText::language}, Field{"type", &ZVISDBText::type},
                        Field{"pid", &ZVISDBText::pid, Notation::Hexadecimal},
                        Field{"dataComponent", &ZVISDBText::dataComponent, Notation::Hexadecimal},
                        Field{"componentTag", &ZVISDBText::componentTag, Notation::Hexadecimal},
                        Field{"languageTag", &ZVISDBText::languageTag});
};

template <>
struct RecordInfo<ZVDualSound>
{
    static constexpr char const* type = "ZVDualSound";
    static constexpr auto fields =
        std::make_tuple(Field{"mode", &ZVDualSound::mode}, Field{"available", &ZVDualSound::available});
};

template <>
struct RecordInfo<ZVRatingInfo>
{
    static constexpr char const* type = "ZVRatingInfo";
    static constexpr auto fields =
        std::make_tuple(Field{"region", &ZVRatingInfo::region}, Field{"dimension", &ZVRatingInfo::dimension},
                        Field{"value", &ZVRatingInfo::value});
};

template <>
struct RecordInfo<ZVResolution>
{
    static constexpr char const* type = "ZVResolution";
    static constexpr auto fields = std::make_tuple(
        Field{"width", &ZVResolution::width}, Field{"height", &ZVResolution::height},
        Field{"frameRateNumerator", &ZVResolution::frameRateNumerator},
        Field{"frameRateDenominator", &ZVResolution::frameRateDenominator},
        Field{"aspectWidth", &ZVResolution::aspectWidth}, Field{"aspectHeight", &ZVResolution::aspectHeight},
        Field{"interlaced", &ZVResolution::interlaced});
};

template <>
struct RecordInfo<IPGProgramId>
{
    static constexpr char const* type = "IPGProgramId";
    static constexpr auto fields = std::make_tuple(
        Field{"serviceId", &IPGProgramId::serviceId}, Field{"eventId", &IPGProgramId::eventId},
        Field{"startTime", &IPGProgramId::startTime}, Field{"duration", &IPGProgramId::duration});
};

/// Calls `visit` with every Field of the record, in order.
template <typename Record, typename Visitor>
void ForEachField(Visitor visit)
{
    std::apply([&](auto const&... field) { (visit(field), ...); }, RecordInfo<Record>::fields);
}

} // namespace zviptv::ctl
