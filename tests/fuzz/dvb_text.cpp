// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "stream/CharacterSet.h"
#include "stream/Descriptors.h"
#include "stream/DvbText.h"

// Texts of broadcasts in all their character tables.

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::fuzz;

namespace {

void Check(std::string const& text, std::size_t size)
{
    Require(IsUtf8(text), "a text is UTF-8");
    Require(!HasControls(text), "a text has no control characters");
    Require(text.size() <= 4 * size, "a text does not grow without bound");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    ByteView const bytes(data, size);
    Check(DecodeDvbText(bytes), size);
    for (LanguageEntry const& entry : ParseLanguages(bytes)) {
        Check(entry.language, entry.language.size());
    }
    auto const supplementary = ParseSupplementaryAudioLanguage(bytes);
    Require(!supplementary || supplementary->size() == 3, "a language is three characters");
    for (TeletextPage const& page : ParseTeletextPages(bytes)) {
        Require(page.magazine >= 1 && page.magazine <= 8, "a teletext magazine");
    }
    ParseSubtitlePages(bytes);
    return 0;
}
