#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace zviptv::sim {

/// A text of a TextPool; 0 is the empty text.
using TextRef = std::uint32_t;

/// Keeps many texts close together, up to 4 GiB. Texts stay where they are.
class TextPool
{
public:
    static constexpr std::size_t MaxTextSize = 0xFFFF;

    TextPool();

    /// Texts over MaxTextSize are cut. @throws std::length_error when the pool is full
    TextRef Add(std::string_view text);

    /// The text of a reference that Add() returned.
    std::string_view Get(TextRef ref) const;

    std::size_t KeptBytes() const { return m_chunks.size() * ChunkSize; }

private:
    static constexpr unsigned ChunkBits = 18;
    static constexpr std::size_t ChunkSize = std::size_t{1} << ChunkBits;

    void AddChunk();

    std::vector<std::unique_ptr<char[]>> m_chunks;
    std::size_t m_used = 0; ///< of the last chunk
};

/// Puts texts into a pool and finds again most of those that it has put there: a table of fixed size
/// remembers the last text of every hash, so a rare text can come twice, but memory is bounded.
class TextInterner
{
public:
    explicit TextInterner(TextPool& pool);

    TextRef Add(std::string_view text);

private:
    TextRef& SlotOf(std::string_view text);
    void Grow();

    TextPool& m_pool;
    std::vector<TextRef> m_slots;
    std::size_t m_added = 0;
};

/// The first `limit` bytes of a UTF-8 text, or less where that would cut a character in two.
std::string_view CutUtf8(std::string_view text, std::size_t limit);

} // namespace zviptv::sim
