#pragma once

#include <chrono>
#include <string>

namespace zviptv::sim {

/// A pipe between this process and a child.
class Pipe
{
public:
    /// @throws std::system_error
    Pipe();
    ~Pipe();
    Pipe(Pipe const&) = delete;
    Pipe& operator=(Pipe const&) = delete;

    int ReadEnd() const { return m_read; }
    int WriteEnd() const { return m_write; }

    /// A program that is run from now on gets the write end; without it, it gets none of the two.
    void PassOn();

    /// To be called once the child has its own; without it the end of the child is not noticed.
    void CloseWriteEnd();

    /// Something can be read, or the pipe has ended.
    bool HasInput() const;

    /// The first line that comes; empty when the pipe ends, or the time is over, before.
    std::string ReadLine(std::chrono::milliseconds timeout);

private:
    int m_read = -1;
    int m_write = -1;
};

} // namespace zviptv::sim
