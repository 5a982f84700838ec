#include "stream/DvbpsiTables.h"

#include "stream/DvbpsiHeaders.h"

#include <new>

namespace zviptv::sim {

namespace {

constexpr std::uint8_t SdtActual = 0x42;
constexpr std::uint16_t MaxPid = 0x1FFF;

DvbpsiHandle Checked(DvbpsiHandle handle, bool attached)
{
    if (!attached)
        throw std::bad_alloc();
    return handle;
}

std::vector<Descriptor> CopyDescriptors(dvbpsi_descriptor_t const* first)
{
    std::vector<Descriptor> copies;
    for (; first; first = first->p_next)
        copies.push_back({first->i_tag, ByteView(first->p_data, first->i_length).Copy()});
    return copies;
}

ServiceName ParseService(dvbpsi_descriptor_t const* first)
{
    for (; first; first = first->p_next) {
        if (first->i_tag != tag::Service)
            continue;
        ByteView const data(first->p_data, first->i_length);
        std::size_t const providerSize = data[1];
        ByteView const name = data.Part(2 + providerSize);
        return {ParseDvbText(name.Part(1, name[0])), ParseDvbText(data.Part(2, providerSize))};
    }
    return {};
}

/// libdvbpsi does not check this length against the section.
bool HasSoundPmtHead(ByteView section)
{
    constexpr std::size_t Fixed = 12 + 4; // up to the programme's descriptors, and the CRC
    return section.Size() >= Fixed && Fixed + (section.U16(10) & 0x0FFFu) <= section.Size();
}

} // namespace

void DvbpsiTableDeleter::operator()(dvbpsi_pat_t* table) const noexcept
{
    dvbpsi_pat_delete(table);
}
void DvbpsiTableDeleter::operator()(dvbpsi_pmt_t* table) const noexcept
{
    dvbpsi_pmt_delete(table);
}
void DvbpsiTableDeleter::operator()(dvbpsi_sdt_t* table) const noexcept
{
    dvbpsi_sdt_delete(table);
}

PatDecoder::PatDecoder()
    : m_feed([this] {
          DvbpsiHandle handle = NewDvbpsiHandle(dvbpsi_pat_detach);
          bool const attached = dvbpsi_pat_attach(handle.get(), &PatDecoder::OnTable, this);
          return Checked(std::move(handle), attached);
      })
{
}

void PatDecoder::OnTable(void* self, dvbpsi_pat_t* table)
{
    static_cast<PatDecoder*>(self)->m_fresh.reset(table);
}

std::optional<std::vector<PatEntry>> PatDecoder::Push(ByteView section)
{
    if ((section.Size() - 12) % 4 != 0) // libdvbpsi would read past the last entry
        return std::nullopt;
    m_feed.Push(section);
    auto const table = std::move(m_fresh);
    if (!table)
        return std::nullopt;
    std::vector<PatEntry> entries;
    for (auto const* entry = table->p_first_program; entry; entry = entry->p_next)
        if (entry->i_number != 0) // 0 is the network's own table
            entries.push_back({entry->i_number, static_cast<std::uint16_t>(entry->i_pid & MaxPid)});
    return entries;
}

PmtDecoder::PmtDecoder(std::uint16_t programme)
    : m_feed([this, programme] {
          DvbpsiHandle handle = NewDvbpsiHandle(dvbpsi_pmt_detach);
          bool const attached = dvbpsi_pmt_attach(handle.get(), programme, &PmtDecoder::OnTable, this);
          return Checked(std::move(handle), attached);
      })
{
}

void PmtDecoder::OnTable(void* self, dvbpsi_pmt_t* table)
{
    static_cast<PmtDecoder*>(self)->m_fresh.reset(table);
}

std::optional<Programme> PmtDecoder::Push(ByteView section)
{
    if (!HasSoundPmtHead(section))
        return std::nullopt;
    m_feed.Push(section);
    auto const table = std::move(m_fresh);
    if (!table)
        return std::nullopt;
    Programme programme;
    programme.number = table->i_program_number;
    programme.version = table->i_version;
    programme.pcrPid = table->i_pcr_pid & MaxPid;
    programme.descriptors = CopyDescriptors(table->p_first_descriptor);
    for (auto const* stream = table->p_first_es; stream; stream = stream->p_next) {
        ElementaryStream copy;
        copy.pid = stream->i_pid & MaxPid;
        copy.streamType = stream->i_type;
        copy.descriptors = CopyDescriptors(stream->p_first_descriptor);
        AddStream(programme, std::move(copy));
    }
    return programme;
}

SdtDecoder::SdtDecoder()
    : m_feed([this] {
          DvbpsiHandle handle = NewDvbpsiHandle(dvbpsi_DetachDemux);
          bool const attached = dvbpsi_AttachDemux(handle.get(), &SdtDecoder::OnSubtable, this);
          return Checked(std::move(handle), attached);
      })
{
}

void SdtDecoder::OnSubtable(dvbpsi_t* handle, std::uint8_t tableId, std::uint16_t extension, void* self)
{
    dvbpsi_sdt_attach(handle, tableId, extension, &SdtDecoder::OnTable, self);
}

void SdtDecoder::OnTable(void* self, dvbpsi_sdt_t* table)
{
    static_cast<SdtDecoder*>(self)->m_fresh.reset(table);
}

std::optional<std::map<std::uint16_t, ServiceName>> SdtDecoder::Push(ByteView section)
{
    if (section[0] != SdtActual || section.Size() < 15)
        return std::nullopt;
    m_feed.Push(section);
    auto const table = std::move(m_fresh);
    if (!table)
        return std::nullopt;
    std::map<std::uint16_t, ServiceName> names;
    for (auto const* service = table->p_first_service; service; service = service->p_next)
        names[service->i_service_id] = ParseService(service->p_first_descriptor);
    return names;
}

} // namespace zviptv::sim
