-- SPDX-License-Identifier: MIT
-- Shows the entries: numbers, names of enumerators, records.

local function whole_number(text)
    return text:match("^%s*[+-]?%d+") ~= nil
end

-- Converts digits to a 64-bit number; Lua's own numbers have 53 bits.
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

local function add_plain_entry(tree, entry)
    local item = tree:add(zviptv, entry.range, entry.key .. ": " .. (entry.value and entry.value:string(ENC_UTF_8) or ""))
    item:add(fields.key, entry.range, entry.key):set_hidden()
    return item
end

-- An entry whose value is not of the D-Bus type ay.
local function add_foreign_entry(tree, entry)
    add_problem(add_plain_entry(tree, entry), entry.key .. " has the D-Bus type " .. entry.signature .. ", not ay")
end

local function add_entry(tree, entry, type_name, info)
    local key, value = entry.key, entry.value
    local field, kind = fields[key], key_kinds[key]
    local text = value and value:string(ENC_UTF_8) or ""
    local item
    if type_name == nil or field == nil then
        item = tree:add(zviptv, entry.range, key .. ": " .. text)
        add_problem(item, "unexpected key " .. key)
    elseif kind_of(type_name) == "bytes" and value == nil then
        item = tree:add(zviptv, entry.range, key .. ": 0 bytes")
    elseif kind_of(type_name) == "bytes" then
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
