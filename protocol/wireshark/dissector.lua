-- SPDX-License-Identifier: MIT
-- Follows the messages: finds requests and the replies that answer them.

-- Requests by their sender and serial, to find that of a reply.
local requests = {}

function zviptv.init()
    requests = {}
end

-- The kind of message by its header; nil for messages of other protocols. The kind of a reply depends on its
-- request.
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
    for _, entry in ipairs(entries) do
        if entry.signature ~= nil then
            add_foreign_entry(tree, entry)
        elseif message.is_helper or message.name ~= nil or common_keys[entry.key] then
            add_entry(tree, entry, types[entry.key] or not message.is_helper and common_keys[entry.key] or nil, info)
        else -- of which function is not known
            add_plain_entry(tree, entry)
        end
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
    local is_read, entries = true, {}
    if message.message ~= "error" then -- its body is a text of the bus
        is_read, entries = pcall(read_entries, message.is_helper)
    end
    if not is_read then
        add_problem(tree, "not a message of the protocol: it is cut or damaged")
        entries = {}
    end
    for _, entry in ipairs(entries) do
        if message.name == nil and entry.key == "functionname" and entry.value ~= nil then
            message.name = entry.value:string(ENC_UTF_8)
        end
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
