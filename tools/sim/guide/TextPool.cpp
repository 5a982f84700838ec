#include "guide/TextPool.h"

#include <cstring>
#include <functional>
#include <limits>
#include <stdexcept>

namespace zviptv::sim {

namespace {

using Length = std::uint16_t;
static_assert(TextPool::MaxTextSize == std::numeric_limits<Length>::max());

constexpr std::size_t FirstSlots = std::size_t{1} << 10;
constexpr std::size_t MaxSlots = std::size_t{1} << 19;

} // namespace

std::string_view CutUtf8(std::string_view text, std::size_t limit)
{
    if (text.size() <= limit)
        return text;
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80)
        --limit;
    return text.substr(0, limit);
}

TextPool::TextPool()
{
    AddChunk();
    m_used = sizeof(Length); // the empty text
    std::memset(m_chunks.front().get(), 0, m_used);
}

void TextPool::AddChunk()
{
    constexpr std::size_t MaxChunks = std::size_t{1} << (32 - ChunkBits);
    if (m_chunks.size() == MaxChunks)
        throw std::length_error("the guide holds more than 4 GiB of texts");
    m_chunks.emplace_back(new char[ChunkSize]); // not zeroed, so that what is not used costs nothing
    m_used = 0;
}

TextRef TextPool::Add(std::string_view text)
{
    if (text.empty())
        return 0;
    text = CutUtf8(text, MaxTextSize);
    if (m_used + sizeof(Length) + text.size() > ChunkSize)
        AddChunk();
    auto const length = static_cast<Length>(text.size());
    char* const place = m_chunks.back().get() + m_used;
    std::memcpy(place, &length, sizeof length);
    std::memcpy(place + sizeof length, text.data(), text.size());
    std::size_t const ref = ((m_chunks.size() - 1) << ChunkBits) | m_used;
    m_used += sizeof length + text.size();
    return static_cast<TextRef>(ref);
}

std::string_view TextPool::Get(TextRef ref) const
{
    char const* const place = m_chunks[ref >> ChunkBits].get() + (ref & (ChunkSize - 1));
    Length length = 0;
    std::memcpy(&length, place, sizeof length);
    return {place + sizeof length, length};
}

TextInterner::TextInterner(TextPool& pool) : m_pool(pool), m_slots(FirstSlots) {}

TextRef& TextInterner::SlotOf(std::string_view text)
{
    return m_slots[std::hash<std::string_view>()(text) % m_slots.size()];
}

void TextInterner::Grow()
{
    std::vector<TextRef> known(m_slots.size() * 2);
    known.swap(m_slots);
    for (TextRef const ref : known)
        SlotOf(m_pool.Get(ref)) = ref;
}

TextRef TextInterner::Add(std::string_view text)
{
    if (m_added == m_slots.size() && m_slots.size() < MaxSlots)
        Grow();
    TextRef& slot = SlotOf(text);
    if (m_pool.Get(slot) != text) {
        slot = m_pool.Add(text);
        ++m_added;
    }
    return slot;
}

} // namespace zviptv::sim
