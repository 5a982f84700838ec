// SPDX-License-Identifier: MIT
#include "Player.h"

#include "input/FailedBytes.h"

#include <utility>

// The player's handling of inputs and their programmes.

namespace zviptv::sim {

namespace {

std::string KnownProgrammes(Demux const& demux)
{
    std::string numbers;
    for (Programme const& programme : demux.Programmes()) {
        numbers += (numbers.empty() ? "" : ", ") + std::to_string(programme.number);
    }
    return numbers;
}

std::string ProblemHint(Demux const& demux)
{
    std::uint64_t const damaged = demux.DamagedSections();
    return damaged == 0 ? "; play a stream that has a PAT and a PMT"
                        : ", but " + std::to_string(damaged) +
                              (damaged == 1 ? " damaged section" : " damaged sections") +
                              " of PAT, PMT or SDT; record the stream again";
}

} // namespace

/// Reads the tables of a file.
std::unique_ptr<Demux> Player::Load(std::unique_ptr<sim::Input> input,
                                    std::optional<std::uint16_t> choice) const
{
    std::string const name = input->Counters().url;
    bool const mayLearn = input->IsArriving();
    auto demux = std::make_unique<Demux>(std::move(input));
    if (demux->Programmes().empty() && !mayLearn) {
        throw StreamError(name + " holds no programme: no PMT found" + ProblemHint(*demux));
    }
    if (!choice || demux->Select(*choice)) {
        return demux;
    }
    if (!mayLearn) {
        throw StreamError(name + " has no programme " + std::to_string(*choice) + ": it has " +
                          KnownProgrammes(*demux));
    }
    demux->Await(*choice);
    return demux;
}

/// Plays from the start.
void Player::Take(std::unique_ptr<Demux> demux, sim::Input* input)
{
    m_demux = std::move(demux);
    m_input = input;
    m_next.reset();
    m_passBegan = 0;
    m_state = ZV_SOURCE_STATE_STARTING;
    m_lastStc.reset();
    m_passTime = m_skipUntil = m_lastTime = StreamTime();
    m_pacer = m_demux->IsLive() ? Pacer() : Pacer(1.0, [this] { return m_clock.Shows(); });
    m_input->SetWakeUp(m_wake);
    m_demux->SetPacketListener(m_onPacket);
}

void Player::Use(std::unique_ptr<Demux> demux, sim::Input* input)
{
    if (m_demux) {
        Change(std::make_shared<Programme const>()); // selections for another input do not apply to this one
    }
    m_duration.reset();
    Take(std::move(demux), input);
    if (m_demux->Current()) {
        Change(m_demux->Current());
    }
}

/// Plays the same input from its start, and keeps the selections.
void Player::Reopen()
{
    std::unique_ptr<sim::Input> input = OpenInputAndWait(m_options);
    sim::Input* const opened = input.get();
    Take(Load(std::move(input), m_choice), opened);
    Begin();
    if (m_demux->Current() && !HaveSameContent(*m_demux->Current(), *m_programme)) {
        Change(m_demux->Current());
    }
}

void Player::OpenAndWait(InputOptions const& options, std::optional<std::uint16_t> programme)
{
    PlayInput(OpenInputAndWait(options), options, programme);
}

void Player::Fail(InputOptions const& options, std::optional<std::uint16_t> programme,
                  std::string const& error)
{
    PlayInput(std::make_unique<sim::Input>(
                  std::unique_ptr<ArrivingBytes>(std::make_unique<FailedBytes>(options.url, error))),
              options, programme);
    m_state = ZV_SOURCE_STATE_ENDED;
}

void Player::PlayInput(std::unique_ptr<sim::Input> input, InputOptions const& options,
                       std::optional<std::uint16_t> programme)
{
    sim::Input* const opened = input.get();
    std::unique_ptr<Demux> demux = Load(std::move(input), programme);
    m_opening.reset();
    if (auto const before = std::exchange(m_onOpened, {})) {
        before("another input was opened meanwhile");
    }
    m_options = options;
    m_choice = programme;
    if (m_onInput) {
        m_onInput();
    }
    Use(std::move(demux), opened);
}

void Player::Open(InputOptions const& options, Opened done)
{
    std::unique_ptr<sim::Input> input;
    try {
        input = OpenInput(options);
    } catch (StreamError const& failure) {
        done(failure.what());
        return;
    }
    auto const before = std::exchange(m_onOpened, std::move(done));
    m_opening = std::move(input);
    m_openingOptions = options;
    if (before) {
        before("another input was opened meanwhile");
    }
    m_opening->WhenOpen([this](std::string const& error) { FinishOpening(error); });
}

void Player::FinishOpening(std::string const& error)
{
    std::unique_ptr<sim::Input> input = std::move(m_opening);
    auto const done = std::exchange(m_onOpened, {});
    if (!error.empty()) {
        done(error);
        return;
    }
    try {
        sim::Input* const opened = input.get();
        std::unique_ptr<Demux> demux = Load(std::move(input), {});
        m_options = m_openingOptions;
        m_choice.reset();
        if (m_onInput) {
            m_onInput();
        }
        Use(std::move(demux), opened);
    } catch (StreamError const& failure) {
        done(failure.what());
        return;
    }
    if (m_wake) {
        m_wake();
    }
    done({});
}

bool Player::SelectProgramme(std::uint16_t number)
{
    if (number == m_programme->number && m_demux->Current()) {
        return true;
    }
    if (!m_demux->Select(number)) {
        return false;
    }
    m_choice = number;
    m_next.reset();
    m_duration.reset(); // the duration depends on the programme's clock
    Change(m_demux->Current());
    if (m_wake) {
        m_wake();
    }
    return true;
}

void Player::SetWakeUp(std::function<void()> wake)
{
    m_wake = std::move(wake);
    m_input->SetWakeUp(m_wake);
}

void Player::SetPacketListener(Demux::PacketListener listener)
{
    m_onPacket = std::move(listener);
    m_demux->SetPacketListener(m_onPacket);
}

/// Handles that the requested programme is not in the tables.
bool Player::LacksProgramme() const
{
    return m_choice && !m_demux->Current() && m_demux->HasAllTables();
}

InputCounters Player::Counters() const
{
    InputCounters counters = m_input->Counters();
    counters.packets = m_demux->Packets();
    if (!counters.isLive) {
        counters.bytes = counters.packets * TsPacketSize;
    }
    if (!m_input->IsArriving()) {
        counters.state = HasEnded() ? "ended" : m_state == ZV_SOURCE_STATE_STARTING ? "waiting" : "receiving";
    } else if (counters.error.empty() && LacksProgramme()) {
        counters.error =
            "it has no programme " + std::to_string(*m_choice) + ": it has " + KnownProgrammes(*m_demux);
    }
    return counters;
}

} // namespace zviptv::sim
