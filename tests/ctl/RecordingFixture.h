// SPDX-License-Identifier: MIT
#pragma once

#include "CtlFixture.h"
#include "Files.h"
#include "MadeFile.h"

#include <filesystem>
#include <string>
#include <unistd.h>

namespace zviptv::test {

/// A stream that ffmpeg makes: the frames of a codec at PID 0x100.
struct GeneratedStream
{
    char const* name;   ///< of the codec, as ffprobe has it
    Words options;      ///< of ffmpeg, from the input to the codec
    char const* frames; ///< their number, as ffprobe counts them
};

inline void PrintTo(GeneratedStream const& stream, std::ostream* out)
{
    *out << stream.name;
}

/// Plays streams of ffmpeg, and checks the recordings with ffprobe. No stream is part of the project.
class RecordingTest : public testing::Test
{
protected:
    RecordingTest()
        : m_folder(std::filesystem::temp_directory_path() / ("zviptv-recording-" + std::to_string(getpid())))
    {
        std::filesystem::create_directory(m_folder);
    }
    ~RecordingTest() override { std::filesystem::remove_all(m_folder); }

    std::string Path(std::string const& name) const { return m_folder / name; }

    static CtlResult RunProgram(Words const& command)
    {
        ChildProcess child(command);
        return Finish(child);
    }

    void Make(Words const& options) const
    {
        Words command = {"ffmpeg", "-nostdin", "-loglevel", "error"};
        command.insert(command.end(), options.begin(), options.end());
        command.insert(command.end(), {"-t", "2", "-f", "mpegts"});
        std::filesystem::create_symlink(MadeFile(command, "made.ts"), Path("made.ts"));
    }

    /// PES packets of the stream that was made: transport packets with the start of one.
    std::string PacketsMade() const
    {
        std::string const stream = ReadFile(Path("made.ts"));
        int count = 0;
        for (std::size_t at = 0; at + 188 <= stream.size(); at += 188) {
            unsigned const pid = (static_cast<unsigned char>(stream[at + 1]) & 0x1FU) << 8U |
                                 static_cast<unsigned char>(stream[at + 2]);
            bool const isStart = (static_cast<unsigned char>(stream[at + 1]) & 0x40U) != 0;
            count += isStart && pid >= 0x100 && pid < 0x110 ? 1 : 0;
        }
        return std::to_string(count);
    }

    /// Plays the stream that was made from its start to its last packet.
    CtlResult Record(Words const& arguments) const
    {
        Words command = {ZVIPTV_SIM_PATH, "--quiet", "--ts", Path("made.ts"), "--wait-for", "1",
                         "--speed",       "4",       "--",   ZVIPTVCTL_PATH,  "pes",        "--count",
                         PacketsMade()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return RunProgram(command);
    }

    /// The output of ffprobe for the entries of all streams, one line each, in the order of ids.
    std::string Probe(std::string const& name, std::string const& entries) const
    {
        return ReadFile(MadeFile({"ffprobe", "-v", "error", "-count_frames", "-show_entries", entries, "-of",
                                  "default=noprint_wrappers=1:nokey=1", Path(name), "-o"},
                                 "probe.txt"));
    }

    std::filesystem::path const m_folder;
};

} // namespace zviptv::test
