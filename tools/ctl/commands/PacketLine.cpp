// SPDX-License-Identifier: MIT
#include "PacketLine.h"

#include "output/Answer.h"

namespace zviptv::ctl {

namespace {

std::string Text(Packet const& packet)
{
    std::string line = LowerName(InfoOf<EZVPESType>(), packet.type);
    if (packet.pid) {
        line += " pid=" + ToHex(*packet.pid, 4);
    }
    if (packet.pts) {
        line += " pts=" + std::to_string(*packet.pts);
    }
    return line + " size=" + std::to_string(packet.data.size());
}

std::string JsonText(Packet const& packet)
{
    Json::Value json(Json::objectValue);
    json["type"] = packet.type;
    if (packet.pid) {
        json["pid"] = *packet.pid;
    }
    if (packet.pts) {
        json["pts"] = *packet.pts;
    }
    json["size"] = ToJson(packet.data.size());
    return Compact(json);
}

} // namespace

std::string PacketLine(Packet const& packet, bool asJson)
{
    return (asJson ? JsonText(packet) : Text(packet)) + "\n";
}

} // namespace zviptv::ctl
