-- SPDX-License-Identifier: MIT
-- A Wireshark dissector for the protocol between applications and the IPTV service.
--
-- It reads captures of a D-Bus bus, as dbus-monitor --pcap and busctl capture write them:
--
--   tshark -X lua_script:zviptv.lua -r bus.pcap -Y 'zviptv.function == "MuteAudio" && zviptv.onoff == 1'
--
-- zviptv.message      request, reply, error, notification; on the helper bus announcement, answer
-- zviptv.endpoint     type word of the endpoint
-- zviptv.function     functionname; a reply has that of its request
-- zviptv.NAME         present in every message of the function NAME
-- zviptv.KEY          value of the entry KEY; KEY.name is the name of an enumerator
-- zviptv.RECORD.FIELD value of a field of a record
-- zviptv.problem      what is wrong with the message

local schema = {}

-- The description by names: functions[type word][name], types by key; enumerations[name][value]; records[name].
local function types_of(values)
    local types = {}
    for _, value in ipairs(values) do
        types[value.key] = value.type
    end
    return types
end

local functions, enumerations, records = {}, {}, {}
for _, endpoint in ipairs(schema.endpoints) do
    functions[endpoint.type] = {}
    for _, calls in ipairs({endpoint.functions, endpoint.notifications}) do
        for _, call in ipairs(calls) do
            functions[endpoint.type][call.name] =
                {request = types_of(call["in"]), reply = types_of(call.out), summary = call.summary}
        end
    end
end
for _, enumeration in ipairs(schema.enumerations) do
    enumerations[enumeration.name] = {}
    for _, value in ipairs(enumeration.values) do
        enumerations[enumeration.name][value.value] = value.name
    end
end
for _, record in ipairs(schema.records) do
    records[record.name] = record
end
local helper, channel = schema.helper, schema.channel
local helper_keys, common_keys = types_of(helper["in"]), types_of(channel["in"])
common_keys[channel.out[1].key] = channel.out[1].type

local zviptv = Proto("zviptv", "IPTV service")

local fields = {}

local function declare(make, name, label, ...)
    if fields[name] == nil then
        fields[name] = make("zviptv." .. name, label or name, ...)
    end
end

declare(ProtoField.string, "message", "Message")
declare(ProtoField.string, "endpoint", "Endpoint")
declare(ProtoField.string, "function", "Function")
declare(ProtoField.string, "key", "Key")
declare(ProtoField.string, "problem", "Problem")

local kinds = {flag = "number", i32 = "number", u32 = "number", i64 = "number", u64 = "u64", bytes = "bytes"}
local makers = {number = ProtoField.int64, u64 = ProtoField.uint64, bytes = ProtoField.bytes, text = ProtoField.string}

local function kind_of(type_name)
    if enumerations[type_name] ~= nil then
        return "number"
    end
    local record = records[type_name:gsub("%[%]$", "")]
    return record ~= nil and record.form ~= "json" and "bytes" or kinds[type_name] or "text"
end

-- A key has one field. If its values have different types, the field is a text, and bytes have no field.
local key_kinds = {}
for _, of_endpoint in pairs(functions) do
    for name, description in pairs(of_endpoint) do
        declare(ProtoField.none, name, description.summary)
        for _, keys in ipairs({description.request, description.reply, common_keys, helper_keys}) do
            for key, type_name in pairs(keys) do
                local kind, so_far = kind_of(type_name), key_kinds[key]
                local is_mixed = so_far ~= nil and so_far ~= kind and kind ~= "bytes" and so_far ~= "bytes"
                if so_far == nil or (so_far == "bytes" and kind ~= "bytes") then
                    key_kinds[key] = kind
                elseif is_mixed then
                    key_kinds[key] = "text"
                end
                if enumerations[type_name] ~= nil then
                    declare(ProtoField.string, key .. ".name")
                end
            end
        end
    end
end
for key, kind in pairs(key_kinds) do
    declare(makers[kind], key)
end
local unsigned = {[1] = ProtoField.uint8, [2] = ProtoField.uint16, [4] = ProtoField.uint32}
for name, record in pairs(records) do
    for _, field in ipairs(record.fields) do
        local full, is_enumeration = name .. "." .. field.name, enumerations[field.type] ~= nil
        local make = record.form == "json" and ProtoField.uint64 or is_enumeration and ProtoField.int32 or unsigned[field.size]
        declare(make, full, field.name, field.notation == "hex" and base.HEX or base.DEC)
        if is_enumeration then
            declare(ProtoField.string, full .. ".name")
        end
    end
end

local all = {}
for _, field in pairs(fields) do
    table.insert(all, field)
end
zviptv.fields = all
