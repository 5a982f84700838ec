// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace zviptv::sim {

/// The bytes of an input, in order. Not thread-safe.
class ByteSource
{
public:
    virtual ~ByteSource() = default;

    /// Reads at most `size` bytes, without waiting. Returns their number: 0 at the end and, while HasEnded()
    /// is false, if none have arrived yet. @throws StreamError if reading fails
    virtual std::size_t Read(std::uint8_t* bytes, std::size_t size) = 0;

    /// Whether no more data will arrive. Only valid after Read() has returned 0.
    virtual bool HasEnded() const = 0;

    /// Goes back to the first byte. @throws StreamError if that is impossible
    virtual void Rewind() = 0;

    /// Whether the sender sets the pace and data cannot be read again.
    virtual bool IsLive() const { return false; }

    /// The name in texts for the user.
    virtual std::string const& Name() const = 0;
};

/// A file that can seek.
class FileBytes : public ByteSource
{
public:
    struct Closer
    {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Closer>;

    /// @throws StreamError "cannot open X: reason"
    explicit FileBytes(std::string const& path);

    /// Reads an open file.
    FileBytes(File file, std::string name) : m_file(std::move(file)), m_name(std::move(name)) {}

    std::size_t Read(std::uint8_t* bytes, std::size_t size) override;
    bool HasEnded() const override { return true; }
    void Rewind() override;
    std::string const& Name() const override { return m_name; }

private:
    File m_file;
    std::string m_name;
};

} // namespace zviptv::sim
