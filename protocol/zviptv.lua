-- zviptv: a Wireshark dissector for the protocol between applications and the IPTV service.
--
-- It reads captures of a D-Bus bus, as dbus-monitor --pcap and busctl capture write them:
--
--   tshark -X lua_script:zviptv.lua -r bus.pcap -Y 'zviptv.function == "MuteAudio" && zviptv.onoff == 1'
--
-- zviptv.message      request, reply, error, notification; on the helper bus announcement, answer
-- zviptv.endpoint     type word of the endpoint
-- zviptv.function     functionname; a reply has that of its request
-- zviptv.NAME         there in every message of the function NAME
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
common_keys.result_internal = "i32"

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

-- A key has one field. If its values are of different kinds, that is a text; bytes have no field then.
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

local dbus = {}
for _, name in ipairs({"message_type", "endianness", "serial", "reply_serial", "sender", "destination", "path", "interface",
                       "member", "body"}) do
    dbus[name] = Field.new("dbus." .. name)
end

local function number_of(name)
    local info = dbus[name]()
    return info and info.value
end

local function text_of(name)
    local info = dbus[name]()
    return info and tostring(info)
end

-- Reads a D-Bus body from its start; offsets are those in the body.
local Reader = {}
Reader.__index = Reader

function Reader.new(range, is_little)
    return setmetatable({range = range, is_little = is_little, at = 0}, Reader)
end

function Reader:align(size)
    self.at = math.ceil(self.at / size) * size
end

function Reader:take(size)
    local part = size > 0 and self.range(self.at, size) or nil
    self.at = self.at + size
    return part
end

function Reader:number()
    self:align(4)
    local part = self:take(4)
    return self.is_little and part:le_uint() or part:uint()
end

-- The next string and the range of its bytes, which is nil if there are none.
function Reader:string()
    local part = self:take(self:number())
    self.at = self.at + 1
    return part and part:string(ENC_UTF_8) or "", part
end

function Reader:value()
    local _, part = self:string()
    return part
end

-- The bytes in a variant.
function Reader:variant()
    local signature = self.range(self.at + 1, self.range(self.at, 1):uint()):string(ENC_UTF_8)
    self.at = self.at + 2 + #signature
    if signature ~= "ay" then
        error("a value has the D-Bus type " .. signature .. ", not ay", 0)
    end
    return self:take(self:number())
end

-- Key, value and range of every entry; the value is nil if it is empty.
function Reader:entries(read_value)
    local entries, size = {}, self:number()
    self:align(8)
    local stop = self.at + size
    while self.at < stop do
        self:align(8)
        local start = self.at
        local key = self:string()
        local value = read_value(self)
        table.insert(entries, {key = key, value = value, range = self.range(start, self.at - start)})
    end
    return entries
end

local function whole_number(text)
    return text:match("^%s*[+-]?%d+") ~= nil
end

-- Digits as a number of 64 bits; Lua's own numbers have 53.
local function to_number64(text, class)
    local sign, digits = text:match("^%s*([+-]?)(%d+)")
    local number, ten = class.new(0), class.new(10)
    for digit in digits:gmatch("%d") do
        number = number * ten + class.new(tonumber(digit))
    end
    return sign == "-" and class.new(0) - number or number
end

local function language(number)
    local code = string.char(math.floor(number / 65536) % 256, math.floor(number / 256) % 256, number % 256)
    return code:match("^%l%l%l$")
end

local function name_of(type_name, number)
    return type_name == "EZVLanguageCode" and language(number) or enumerations[type_name][number]
end

local function add_name(tree, name, type_name, number, range)
    local enumerator = name_of(type_name, number)
    if enumerator ~= nil then
        tree:add(fields[name .. ".name"], range, enumerator):set_generated()
        tree:append_text(" (" .. enumerator .. ")")
    end
end

local function add_record(tree, name, record, range)
    local branch = tree:add(zviptv, range, name)
    for _, field in ipairs(record.fields) do
        local part = range(field.offset, field.size)
        local is_enumeration = enumerations[field.type] ~= nil
        local number = is_enumeration and part:le_int() or part:le_uint()
        local full = name .. "." .. field.name
        local item = branch:add(fields[full], part, number)
        if is_enumeration then
            add_name(item, full, field.type, number, part)
        end
    end
end

local function add_json_record(tree, name, record, range)
    local text = range:string(ENC_UTF_8)
    for _, field in ipairs(record.fields) do
        local digits = text:match('"' .. field.key .. '"%s*:%s*"?(%d+)')
        if digits ~= nil then
            tree:add(fields[name .. "." .. field.name], range, to_number64(digits, UInt64))
        end
    end
end

local function add_problem(tree, text)
    tree:add(fields.problem, text):set_generated()
    tree:add_expert_info(PI_MALFORMED, PI_WARN, text)
end

local function add_value(tree, key, type_name, value)
    local name = type_name:gsub("%[%]$", "")
    local record = records[name]
    if record ~= nil and record.form == "json" then
        add_json_record(tree, name, record, value)
    elseif record ~= nil then
        if value:len() < record.size then
            add_problem(tree, key .. " has " .. value:len() .. " bytes, not " .. record.size)
        end
        for offset = 0, value:len() - record.size, record.size do
            add_record(tree, name, record, value(offset, record.size))
        end
    elseif enumerations[type_name] ~= nil and whole_number(value:string(ENC_UTF_8)) then
        add_name(tree, key, type_name, tonumber(value:string(ENC_UTF_8):match("^%s*[+-]?%d+")), value)
    end
end

local function add_entry(tree, entry, type_name, info)
    local key, value = entry.key, entry.value
    local field, kind = fields[key], key_kinds[key]
    local text = value and value:string(ENC_UTF_8) or ""
    local item
    if type_name == nil or field == nil then
        item = tree:add(zviptv, entry.range, key .. ": " .. text)
        add_problem(item, "unexpected key " .. key)
    elseif kind_of(type_name) == "bytes" and value ~= nil then
        item = kind == "bytes" and tree:add(field, value) or tree:add(zviptv, value, key .. ": " .. value:len() .. " bytes")
    elseif kind == "text" then
        item = tree:add(field, entry.range, text)
    elseif whole_number(text) then
        item = tree:add(field, value, to_number64(text, kind == "u64" and UInt64 or Int64))
    else
        item = tree:add(zviptv, entry.range, key .. ": " .. text)
        add_problem(item, key .. " is no number")
    end
    item:add(fields.key, entry.range, key):set_hidden()
    if type_name ~= nil and value ~= nil then
        add_value(item, key, type_name, value)
    end
    local is_shown = key ~= "functionname" and key ~= "handleID" and kind_of(type_name or "text") ~= "bytes" and #text <= 40
    table.insert(info, is_shown and (key .. "=" .. text) or nil)
end

-- What replies answer, by sender and serial of the request.
local requests = {}

function zviptv.init()
    requests = {}
end

-- What kind of message the header announces; nil for other people's messages. Replies go by their request.
local function classify()
    local kind, interface, member = number_of("message_type"), text_of("interface"), text_of("member")
    if kind == 2 or kind == 3 then
        local request = requests[tostring(text_of("destination")) .. " " .. tostring(number_of("reply_serial"))]
        return request and {message = kind == 3 and "error" or request.is_helper and "answer" or "reply",
                            endpoint = request.endpoint, name = request.name, is_helper = request.is_helper}
    elseif interface == helper.interface and kind == 1 then
        return {message = "announcement", is_helper = true}
    elseif interface == channel.interface and (member == channel.request or member == channel.notification) then
        local path = text_of("path")
        local endpoint = path:sub(1, #channel.path) == channel.path and path:sub(#channel.path + 1) or ""
        return {message = kind == 4 and "notification" or "request", endpoint = endpoint}
    end
    return nil
end

local function read_entries(is_helper)
    local body = dbus.body()
    if body == nil then
        return {}
    end
    return Reader.new(body.range, number_of("endianness") == 108):entries(is_helper and Reader.value or Reader.variant)
end

local function add_function(tree, description, message, range)
    if message.name == nil then
        return nil
    end
    tree:add(fields["function"], range, message.name)
    if description == nil then
        add_problem(tree, "unknown function " .. message.name)
    else
        tree:add(fields[message.name], range):set_generated()
    end
    return description and description[message.message == "reply" and "reply" or "request"]
end

local function add_message(tree, message, entries, range, info)
    tree:add(fields.message, range, message.message)
    if message.endpoint ~= nil then
        tree:add(fields.endpoint, range, message.endpoint)
    end
    local of_endpoint = functions[message.endpoint] or {}
    local types = add_function(tree, of_endpoint[message.name], message, range)
    types = message.is_helper and helper_keys or types or {}
    for _, entry in ipairs(message.message ~= "error" and entries or {}) do
        add_entry(tree, entry, types[entry.key] or not message.is_helper and common_keys[entry.key] or nil, info)
    end
end

function zviptv.dissector(buffer, pinfo, root)
    local message = classify()
    if message == nil then
        return
    end
    local body = dbus.body()
    local range = body and body.range or buffer()
    local tree = root:add(zviptv, range)
    local is_read, entries = pcall(read_entries, message.is_helper)
    if not is_read then
        add_problem(tree, "not a message of the protocol: " .. tostring(entries))
        entries = {}
    end
    local first = entries[1]
    if first ~= nil and first.key == "functionname" and first.value ~= nil then
        message.name = first.value:string(ENC_UTF_8)
    end
    if number_of("message_type") == 1 then
        requests[tostring(text_of("sender")) .. " " .. tostring(number_of("serial"))] = message
    end
    local info = {message.name or message.endpoint or "helper bus", message.message}
    add_message(tree, message, entries, range, info)
    tree:append_text(": " .. table.concat(info, " "))
    pinfo.cols.protocol = "ZVIPTV"
    pinfo.cols.info = table.concat(info, " ")
end

register_postdissector(zviptv)
