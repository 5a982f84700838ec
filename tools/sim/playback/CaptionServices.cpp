// SPDX-License-Identifier: MIT
#include "CaptionServices.h"

namespace zviptv::sim {

namespace {

constexpr std::uint8_t CaptionServiceTag = 0x86;
constexpr std::size_t EntrySize = 6;

void AddServices(std::vector<CaptionService>& services, std::vector<Descriptor> const& descriptors)
{
    for (Descriptor const& descriptor : descriptors) {
        if (descriptor.tag != CaptionServiceTag || descriptor.data.empty()) {
            continue;
        }
        std::size_t const announced = descriptor.data[0] & 0x1FU;
        for (std::size_t i = 0; i < announced && 1 + (i + 1) * EntrySize <= descriptor.data.size(); ++i) {
            std::uint8_t const* const entry = &descriptor.data[1 + i * EntrySize];
            bool const digital = (entry[3] & 0x80U) != 0;
            if (!digital) {
                continue;
            }
            CaptionService service;
            service.language = ZVLanguageFromISO639(std::string(entry, entry + 3).c_str());
            service.number = static_cast<EZVCaptionService>(entry[3] & 0x3FU);
            service.koreanCode = (entry[4] & 0x20U) != 0 ? '1' : '0';
            services.push_back(service);
        }
    }
}

} // namespace

std::vector<CaptionService> CaptionServices(Programme const& programme)
{
    std::vector<CaptionService> services;
    AddServices(services, programme.descriptors);
    for (ElementaryStream const& stream : programme.streams) {
        AddServices(services, stream.descriptors);
    }
    return services;
}

} // namespace zviptv::sim
