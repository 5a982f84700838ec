-- SPDX-License-Identifier: MIT
-- A script for tshark: for each display filter below, prints the filter, and below it the fields of every message that
-- matches it. One run of tshark serves all filters, because it takes long to start.
local rows = {
    {filter = 'zviptv.function == "MuteAudio" && zviptv.onoff == 1', fields = "message endpoint handleID onoff"},
    {filter = 'zviptv.MuteVideo', fields = "message function"},
    {filter = 'zviptv.mode.name == "MAIN"', fields = "function mode"},
    {filter = 'zviptv.ZVAudio.pid == 0x101',
        fields = "function message result_internal ZVAudio.language.name ZVAudio.encoding"},
    {filter = 'zviptv.result_internal == 0 && zviptv.endpoint == "BROADCASTDATA"', fields = "function"},
    {filter = 'zviptv.index == 77', fields = "function message index"},
    {filter = 'zviptv.landCode.name == "eng"', fields = "function landCode index"},
    {filter = 'zviptv.ZVRatingInfo.value > 12',
        fields = "function ratingInfoSize ZVRatingInfo.region ZVRatingInfo.value"},
    {filter = 'zviptv.AppID contains "example"', fields = "function AppID"},
    {filter = 'zviptv.IPGProgramId.eventId == 65535',
        fields = "IPGProgramId.serviceId IPGProgramId.startTime program.name"},
    {filter = 'zviptv.eventID == 4294967295', fields = "function inID"},
    {filter = 'zviptv.data contains "Horror"', fields = "function data"},
    {filter = 'zviptv.pesPID == 0x101 && zviptv.pesDataSize > 0', fields = "message pesType.name", once = true},
    {filter = 'zviptv.CaptionCB && zviptv.captionDataSize > 0', fields = "message function", once = true},
    {filter = 'zviptv.on == 1', fields = "function endpoint"},
    {filter = 'zviptv.message == "announcement" && zviptv.type == "IPTVDATASUBSCRIBER"', fields = "add"},
    {filter = 'zviptv.MuteVideo && zviptv.onoff == 1', fields = "function onoff problem"},
    {filter = '_ws.expert.message contains "functionname"', fields = "problem"},
    {filter = 'zviptv.problem', fields = "message problem"},
}
local drawn = 0

-- Fields have to be found before the first message is read.
for _, row in ipairs(rows) do
    row.lines = {}
    row.found = {}
    for name in row.fields:gmatch("%S+") do
        table.insert(row.found, Field.new("zviptv." .. name))
    end
end

local function text(row)
    local columns = {}
    for _, field in ipairs(row.found) do
        local values = {}
        for _, value in ipairs({field()}) do
            table.insert(values, tostring(value))
        end
        table.insert(columns, table.concat(values, ","))
    end
    return "    " .. table.concat(columns, " ")
end

local function listen(row)
    local listener = Listener.new("frame", row.filter)

    function listener.packet()
        local line = text(row)
        if not (row.once and row.lines[#row.lines] == line) then
            table.insert(row.lines, line)
        end
    end

    function listener.draw()
        drawn = drawn + 1
        if drawn == #rows then
            for _, each in ipairs(rows) do
                print(each.filter)
                for _, line in ipairs(each.lines) do
                    print(line)
                end
            end
        end
    end
end

-- A filter knows the fields of other scripts only after all scripts have been loaded.
local late = Proto("zviptv_test", "Test of the dissector")
function late.init()
    for _, row in ipairs(rows) do
        if not row.listens then
            row.listens = true
            listen(row)
        end
    end
end
