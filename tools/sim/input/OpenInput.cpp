// SPDX-License-Identifier: MIT
#include "input/GrowingFile.h"
#include "input/HttpBytes.h"
#include "input/Input.h"
#include "input/InputUrl.h"
#include "input/PipeBytes.h"
#include "input/SilentBytes.h"
#include "input/SocketBytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zviptv::sim {

namespace {

template <typename Bytes>
std::unique_ptr<Input> InputOf(std::unique_ptr<Bytes> bytes)
{
    return std::make_unique<Input>(std::unique_ptr<ArrivingBytes>(std::move(bytes)));
}

std::unique_ptr<Input> OpenPath(InputOptions const& options)
{
    struct stat status
    {
    };
    if (stat(options.url.c_str(), &status) == 0 && S_ISFIFO(status.st_mode)) {
        return InputOf(PipeBytes::OpenFifo(options.url, options.follow));
    }
    if (options.follow) {
        return InputOf(std::make_unique<GrowingFile>(options.url));
    }
    return std::make_unique<Input>(std::make_unique<FileBytes>(options.url));
}

/// A file as standard input is played like any file.
std::unique_ptr<Input> OpenStandardInput(InputOptions const& options)
{
    if (isatty(STDIN_FILENO) != 0) {
        throw StreamError("standard input is a terminal; pipe a transport stream into it");
    }
    FileHandle copy(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    struct stat status
    {
    };
    if (!copy || fstat(copy.Get(), &status) != 0) {
        throw StreamError(std::string("cannot open standard input: ") + std::strerror(errno));
    }
    if (S_ISREG(status.st_mode)) {
        return OpenPath({"/dev/stdin", options.follow});
    }
    return InputOf(std::make_unique<PipeBytes>(std::move(copy), options.url));
}

} // namespace

std::unique_ptr<Input> OpenInput(InputOptions const& options)
{
    if (options.url.empty()) {
        return InputOf(std::make_unique<SilentBytes>());
    }
    InputUrl const url = ParseInputUrl(options.url);
    if (options.follow && url.kind != InputUrl::Kind::File) {
        throw StreamError("cannot follow " + options.url + ": --follow is for files and FIFOs; leave it out");
    }
    switch (url.kind) {
    case InputUrl::Kind::StandardInput:
        return OpenStandardInput(options);
    case InputUrl::Kind::Udp:
    case InputUrl::Kind::Rtp:
        return InputOf(std::make_unique<SocketBytes>(url));
    case InputUrl::Kind::Http:
        return InputOf(std::make_unique<HttpBytes>(options.url));
    case InputUrl::Kind::File:
        break;
    }
    return OpenPath(options);
}

std::unique_ptr<Input> OpenInputAndWait(InputOptions const& options)
{
    std::unique_ptr<Input> input = OpenInput(options);
    std::optional<std::string> outcome;
    input->WhenOpen([&outcome](std::string const& error) { outcome = error; });
    while (!outcome) {
        g_main_context_iteration(nullptr, TRUE);
    }
    if (!outcome->empty()) {
        throw StreamError(*outcome);
    }
    return input;
}

} // namespace zviptv::sim
