// SPDX-License-Identifier: MIT
#include "input/InputUrl.h"

#include "stream/PacketSource.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

namespace zviptv::sim {

namespace {

[[noreturn]] void Refuse(InputUrl const& url, std::string const& reason)
{
    throw StreamError("cannot open " + url.text + ": " + reason);
}

/// Removes the text up to `mark`, and the mark, and returns that text. Without a mark, it is the whole text.
std::string_view TakeUntil(std::string_view& text, char mark)
{
    std::size_t const end = std::min(text.find(mark), text.size());
    std::string_view const taken = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return taken;
}

void ReadOptions(InputUrl& url, std::string_view options)
{
    while (!options.empty()) {
        std::string_view option = TakeUntil(options, '&');
        std::string const name(TakeUntil(option, '='));
        if (name != "iface") {
            Refuse(url, "unknown option '" + name + "'; use iface=NAME, for example ?iface=eth0");
        }
        if (option.empty() || !url.interface.empty()) {
            Refuse(url, "iface needs one name of a network interface, for example ?iface=eth0");
        }
        url.interface = option;
    }
}

/// Parses udp:// or rtp://, as the user wrote it.
std::string SchemeOf(InputUrl const& socket)
{
    return socket.text.substr(0, 6);
}

std::string Advice(InputUrl const& socket)
{
    return "write " + SchemeOf(socket) + "GROUP:PORT, for example " + SchemeOf(socket) + "@239.1.1.1:1234";
}

void ReadPort(InputUrl& url, std::string_view text)
{
    char const* const end = text.data() + text.size();
    auto const result = std::from_chars(text.data(), end, url.port);
    if (result.ec != std::errc() || result.ptr != end || url.port == 0) {
        Refuse(url, "'" + std::string(text) + "' is not a port, 1 to 65535; " + Advice(url));
    }
}

void ReadSocket(InputUrl& url, std::string_view rest)
{
    std::string_view address = TakeUntil(rest, '?');
    ReadOptions(url, rest);
    if (!address.empty() && address.back() == '/') {
        address.remove_suffix(1);
    }
    if (!address.empty() && address.front() == '@') {
        address.remove_prefix(1);
    }
    std::size_t const colon = address.rfind(':');
    if (colon == std::string_view::npos) {
        Refuse(url, "there is no port; " + Advice(url));
    }
    std::string_view host = address.substr(0, colon);
    bool const isBracketed = host.size() >= 2 && host.front() == '[' && host.back() == ']';
    if (isBracketed) {
        host = host.substr(1, host.size() - 2);
    } else if (host.find(':') != std::string_view::npos) {
        Refuse(url,
               "an IPv6 address is written in brackets, for example " + SchemeOf(url) + "@[ff15::1]:1234");
    }
    ReadPort(url, address.substr(colon + 1));
    url.host = host;
}

} // namespace

InputUrl ParseInputUrl(std::string const& text)
{
    InputUrl url;
    url.text = text;
    if (text == "-") {
        url.kind = InputUrl::Kind::StandardInput;
        return url;
    }
    std::size_t const mark = text.find("://");
    if (mark == std::string::npos || text.find('/') < mark) {
        return url;
    }
    std::string scheme = text.substr(0, mark);
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    if (scheme == "http" || scheme == "https") {
        url.kind = InputUrl::Kind::Http;
        return url;
    }
    if (scheme != "udp" && scheme != "rtp") {
        Refuse(url,
               "unknown kind of input '" + scheme + "'; use a file, -, udp://, rtp://, http:// or https://");
    }
    url.kind = scheme == "udp" ? InputUrl::Kind::Udp : InputUrl::Kind::Rtp;
    ReadSocket(url, std::string_view(text).substr(mark + 3));
    return url;
}

} // namespace zviptv::sim
