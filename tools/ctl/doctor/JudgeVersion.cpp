// SPDX-License-Identifier: MIT
#include "doctor/JudgeVersion.h"

namespace zviptv::ctl::doctor {

namespace {

constexpr char ProtocolNote[] =
    "In a service that you write: answer each announcement, a call of SendSignal, with a "
    "list of pairs of texts, a(ss).";
constexpr char Meaning[] = "An application may get answers that differ from its headers, or none.";

bool IsBelow(std::string const& file, std::string const& folder)
{
    return file.compare(0, folder.size(), folder) == 0;
}

std::string FolderOf(std::string const& file)
{
    return file.substr(0, file.rfind('/') + 1);
}

Finding WrongLibrary(Facts const& facts)
{
    VersionFacts const& versions = facts.versions;
    std::string const text = "zviptvctl is " + versions.tool + ", but " + versions.loadedFile +
                             ", which it has loaded, is " + versions.loaded;
    bool const isLocalTool = IsBelow(versions.toolFile, "/usr/local/");
    bool const isLocalLibrary = IsBelow(versions.loadedFile, "/usr/local/");
    if (versions.isFromLibraryPath) {
        return Wrong("version", ExitCode::Malformed, text, Meaning, {"unset LD_LIBRARY_PATH"},
                     versions.loadedFile + " is found first: its folder is in LD_LIBRARY_PATH.");
    }
    if (isLocalLibrary && !isLocalTool) {
        return Wrong("version", ExitCode::Malformed, text, Meaning,
                     {AsRoot(facts, "rm " + FolderOf(versions.loadedFile) + "libzv-iptv-service-api.so*"),
                      AsRoot(facts, "ldconfig")},
                     versions.loadedFile + " is found first. It is left from an earlier installation.");
    }
    if (isLocalTool && !isLocalLibrary) {
        return Wrong("version", ExitCode::Malformed, text, Meaning,
                     {AsRoot(facts, "rm " + Quoted(versions.toolFile))},
                     versions.toolFile + " is found first. It is left from an earlier installation.");
    }
    return Wrong("version", ExitCode::Malformed, text, Meaning,
                 {AsRoot(facts, "apt-get install --reinstall libzv-iptv-service-api1 zv-iptv-tools")},
                 "If they do not come from packages, build and install both again.");
}

Finding WrongService(Facts const& facts)
{
    ServiceFacts const& service = facts.service;
    std::string const text =
        service.isLibraryReplaced
            ? "the service still runs the library that has been replaced since it started"
            : "the service runs the library " + service.loaded + ", but applications run " +
                  facts.versions.loaded;
    return Wrong("version", ExitCode::Malformed, text, Meaning, RestartService(facts));
}

} // namespace

Finding JudgeProtocol(Facts const& facts)
{
    constexpr char Check[] = "protocol";
    if (auto const finding = NoOwner(facts, Check)) {
        return *finding;
    }
    std::string text;
    switch (facts.service.outcome) {
    case Outcome::Answered:
        return Ok(Check, "the service answers as this version of the library expects");
    case Outcome::Unreadable:
        text = "this version of the library cannot read the service's answer: " + facts.service.error;
        break;
    case Outcome::Failed:
        text =
            "the service does not know a call that this version of the library makes: " + facts.service.error;
        break;
    default:
        return NotChecked(Check, "the service has not answered");
    }
    return Wrong(Check, ExitCode::Malformed, text,
                 "An application gets objects, but their calls return false.", CorrectService(facts),
                 ProtocolNote);
}

Finding JudgeVersion(Facts const& facts)
{
    VersionFacts const& versions = facts.versions;
    if (versions.loaded.empty()) {
        return Unknown("version", "zviptvctl " + versions.tool + "; the name of " + versions.loadedFile +
                                      " does not contain a version");
    }
    if (versions.loaded != versions.tool) {
        return WrongLibrary(facts);
    }
    ServiceFacts const& service = facts.service;
    if (service.isLibraryReplaced || (!service.loaded.empty() && service.loaded != versions.loaded)) {
        return WrongService(facts);
    }
    return Ok("version", "zviptvctl " + versions.tool + ", library " + versions.loaded + " (" +
                             versions.loadedFile + ")" +
                             (service.loaded.empty() ? "" : ", service " + service.loaded));
}

} // namespace zviptv::ctl::doctor
