-- SPDX-License-Identifier: MIT
-- Reading the D-Bus message: its header from Wireshark's own dissector, its body from the bytes.

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
