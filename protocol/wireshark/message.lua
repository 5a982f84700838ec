-- SPDX-License-Identifier: MIT
-- Reads the D-Bus message: its header from Wireshark's dissector, its body from the bytes.

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

function Reader:signature()
    local part = self:take(self:take(1):uint())
    self.at = self.at + 1
    return part and part:string(ENC_UTF_8) or ""
end

-- Alignments of the D-Bus types; those in sized have as many bytes.
local alignments = {y = 1, g = 1, v = 1, n = 2, q = 2, b = 4, i = 4, u = 4, h = 4, s = 4, o = 4, a = 4,
                    x = 8, t = 8, d = 8, ["("] = 8, ["{"] = 8}
local sized = "[ynqbiuhxtd]"

-- The first complete type of a signature.
local function first_type(signature)
    if signature:sub(1, 1) == "a" then
        return "a" .. first_type(signature:sub(2))
    end
    return signature:match("^%b()") or signature:match("^%b{}") or signature:sub(1, 1)
end

-- Skips a value of a complete D-Bus type.
function Reader:skip(signature)
    local kind = signature:sub(1, 1)
    self:align(alignments[kind])
    if kind:match(sized) then
        self:take(alignments[kind])
    elseif kind == "s" or kind == "o" then
        self:string()
    elseif kind == "g" then
        self:signature()
    elseif kind == "v" then
        self:skip(self:signature())
    elseif kind == "a" then
        local size = self:number()
        self:align(alignments[signature:sub(2, 2)])
        self:take(size)
    else
        local members = signature:sub(2, -2)
        while members ~= "" do
            local member = first_type(members)
            self:skip(member)
            members = members:sub(#member + 1)
        end
    end
end

-- The bytes in a variant; nil and the signature if it holds another type.
function Reader:variant()
    local signature = self:signature()
    if signature ~= "ay" then
        self:skip(signature)
        return nil, signature
    end
    return self:take(self:number())
end

-- Key, value and range of every entry, and the signature of a value that is not of the type ay. The value is nil if it is
-- empty or of another type.
function Reader:entries(read_value)
    local entries, size = {}, self:number()
    self:align(8)
    local stop = self.at + size
    while self.at < stop do
        self:align(8)
        local start = self.at
        local key = self:string()
        local value, signature = read_value(self)
        table.insert(entries, {key = key, value = value, signature = signature, range = self.range(start, self.at - start)})
    end
    return entries
end
