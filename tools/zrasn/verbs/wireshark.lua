
-- From here on the file is the same for any records. `records` holds for each name its members, `order` the names.

local zrasn = Proto("zrasn", "Authorization and policy records (BER)")
zrasn.prefs.record = Pref.string("Record", "", "Take all envelopes for this record; empty: the first one that fits")
zrasn.prefs.show_secrets = Pref.bool("Show secrets", false, "Show the values of members marked secret, not \"***\"")

local most_octets = 16 * 1024 * 1024 -- of an envelope that is put together from segments
local most_items = 20000             -- that are shown of one envelope
local most_depth = 40                -- records in each other that are shown

local f_version = ProtoField.uint8("zrasn.version", "Version")
local f_record = ProtoField.string("zrasn.record", "Record")
local f_fitting = ProtoField.string("zrasn.fitting", "Records that fit")
local e_deviation = ProtoExpert.new("zrasn.deviation", "Not the form that the library writes", expert.group.PROTOCOL,
                                    expert.severity.NOTE)
local e_misfit = ProtoExpert.new("zrasn.misfit", "Does not fit the record", expert.group.MALFORMED,
                                 expert.severity.ERROR)
local e_hidden = ProtoExpert.new("zrasn.hidden", "More than is shown", expert.group.UNDECODED, expert.severity.NOTE)

zrasn.fields = { f_version, f_record, f_fitting }
zrasn.experts = { e_deviation, e_misfit, e_hidden }

-- The fields that a filter can name: zrasn.RECORD.MEMBER.
local fields = {}
for _, name in ipairs(order) do
    for _, member in ipairs(records[name]) do
        local abbreviation = "zrasn." .. name .. "." .. member.name
        local field
        if member.secret or member.kind == "text" or member.kind == "stored_text" then
            field = ProtoField.string(abbreviation, member.name)
        elseif member.kind == "integer" then
            field = (member.signed and ProtoField.int32 or ProtoField.uint32)(abbreviation, member.name)
        elseif member.kind:find("octets$") then
            field = ProtoField.bytes(abbreviation, member.name)
        else
            field = ProtoField.none(abbreviation, member.name)
        end
        fields[member] = field
        table.insert(zrasn.fields, field)
    end
end

local names = { [0x02] = "INTEGER", [0x04] = "OCTET STRING", [0x05] = "NULL", [0x0C] = "UTF8String", [0x30] = "SEQUENCE" }

local function described(identifier)
    if identifier == nil then return "the end" end
    return string.format("%s (%02x)", names[identifier] or "an element", identifier)
end

-- Octets are taken from the string `s`; positions in it count from 1, and `stop` is the one behind the last octet.

-- The header of the element at `at`: identifier octet, where its contents begin, where they end (nil: indefinite), and
-- whether its length is as short as can be. Nil when the octets end in it or no record has such a header.
local function header(s, at, stop)
    if at + 1 >= stop then return nil end
    local identifier, length = s:byte(at, at + 1)
    if identifier % 32 == 31 then return nil end
    if length < 0x80 then return identifier, at + 2, at + 2 + length, true end
    local count = length - 0x80
    if count == 0 then
        if identifier % 64 < 32 then return nil end
        return identifier, at + 2, nil, false
    end
    if at + 2 + count > stop then return nil end
    local value = 0
    for i = at + 2, at + 1 + count do
        value = value * 256 + s:byte(i)
        if value > 0xFFFFFFFF then return nil end
    end
    local contents = at + 2 + count
    local least = value < 0x80 and 0 or value < 0x100 and 1 or value < 0x10000 and 2 or value < 0x1000000 and 3 or 4
    return identifier, contents, contents + value, count == least
end

local function is_end(s, at) return s:byte(at) == 0 and s:byte(at + 1) == 0 end

-- Where the element at `at` ends; or nil, and how many octets are missing at least, which is nil too where no more
-- octets would make it an element.
local function element_end(s, at, stop)
    stop = stop or #s + 1
    local open = 0
    repeat
        if at + 1 >= stop then return nil, at + 2 - stop end
        if open > 0 and is_end(s, at) then
            open = open - 1
            at = at + 2
        else
            local identifier, contents, behind = header(s, at, stop)
            if identifier == nil then
                local length = s:byte(at + 1)
                local cut = s:byte(at) % 32 ~= 31 and length > 0x80 and length <= 0x84 and at + 2 + length - 0x80 > stop
                return nil, cut and at + 2 + length - 0x80 - stop or nil
            end
            if behind == nil then open = open + 1 end
            at = behind or contents
        end
    until open == 0
    if at > stop then return nil, at - stop end
    return at
end

-- The octets of a string, whose segments are put together; nil where they are no OCTET STRINGs, or do not end. And
-- where it ends.
local function string_octets(s, identifier, contents, behind, stop)
    if identifier % 64 < 32 then
        if behind > stop then return nil end
        return s:sub(contents, behind - 1), behind
    end
    local parts, ends = {}, { behind or false }
    local at = contents
    while #ends > 0 do
        local last = ends[#ends]
        if last and at == last then
            table.remove(ends)
        elseif not last and at + 1 < stop and is_end(s, at) then
            table.remove(ends)
            at = at + 2
        else
            local inner, from, to = header(s, at, last or stop)
            if inner == 0x04 and to <= (last or stop) then
                table.insert(parts, s:sub(from, to - 1))
                at = to
            elseif inner == 0x24 and (to == nil or to <= (last or stop)) and #ends < 1000 then
                table.insert(ends, to or false)
                at = from
            else
                return nil
            end
        end
    end
    return table.concat(parts), at
end

-- The number that the last 32 bits say.
local function number(octets, signed)
    local value = 0
    for i = math.max(1, #octets - 3), #octets do value = value * 256 + octets:byte(i) end
    local bits = math.min(#octets, 4) * 8
    if bits > 0 and value >= 2 ^ (bits - 1) then value = value - 2 ^ bits end
    if not signed and value < 0 then value = value + 2 ^ 32 end
    return value
end

local function hex(octets)
    local digits = octets:sub(1, 64):gsub(".", function(c) return string.format("%02x", c:byte()) end)
    return #octets > 64 and digits .. "... (" .. #octets .. " octets)" or digits
end

local function is_utf8(octets)
    local at = 1
    while at <= #octets do
        local first = octets:byte(at)
        local count = first < 0x80 and 0 or first >= 0xC2 and first < 0xE0 and 1 or first >= 0xE0 and first < 0xF0 and 2 or
            first >= 0xF0 and first < 0xF5 and 3 or nil
        if count == nil or not octets:find("^" .. ("[\128-\191]"):rep(count), at + 1) then return false end
        at = at + 1 + count
    end
    return true
end

-- One envelope that is walked. Without a tree the walk only judges.
local walk = {}
walk.__index = walk

function walk:range(from, to) return self.tvb(self.base + from - 1, to - from) end

function walk:add(parent, member, from, to, value)
    self.items = self.items + 1
    if parent == nil or self.items > most_items then
        self.hidden = self.hidden or parent ~= nil
        return nil
    end
    if value ~= nil then return parent:add(fields[member], self:range(from, to), value) end
    return parent:add(fields[member], self:range(from, to))
end

function walk:misfit(parent, at, stop, expected)
    if self.misfits == nil then
        local found = at < stop and self.s:byte(at) or nil
        self.misfits = string.format("found %s, expected %s", described(found), expected)
        if parent ~= nil then parent:add_proto_expert_info(e_misfit, self.misfits) end
    end
    return nil
end

local function deviates(item, what)
    if item ~= nil then item:add_proto_expert_info(e_deviation, what) end
end

local function judge_header(item, behind, shortest)
    if behind == nil then
        deviates(item, "indefinite length")
    elseif not shortest then
        deviates(item, "a longer length than needed")
    end
end

-- A value that is no record: returns where it ends, or nil.
function walk:value(parent, member, at, stop)
    local s = self.s
    local wanted = member.identifier
    local identifier, contents, behind, shortest = header(s, at, stop)
    local is_string = wanted ~= 0x02
    if identifier ~= wanted and not (is_string and identifier == wanted + 0x20) then
        return self:misfit(parent, at, stop, described(wanted))
    end
    local octets, after = string_octets(s, identifier, contents, behind, stop)
    if octets == nil then return self:misfit(parent, at, stop, "its contents") end
    local item
    if member.secret and not zrasn.prefs.show_secrets then
        item = self:add(parent, member, at, after, "***")
    elseif member.kind == "integer" then
        item = self:add(parent, member, at, after, number(octets, member.signed))
    elseif member.kind:find("octets$") and not member.secret then
        item = self:add(parent, member, at, after)
        if item ~= nil then item:set_text(member.name .. ": " .. hex(octets)) end
    elseif member.kind ~= "version" then
        item = self:add(parent, member, at, after, (octets:gsub("[%z\1-\31\127]", ".")))
    end
    if member.size ~= nil and #octets ~= member.size then
        return self:misfit(parent, at, stop, member.size .. " octets")
    end
    judge_header(item, behind, shortest)
    if identifier ~= wanted then deviates(item, "a string in segments") end
    if wanted == 0x02 then
        local first, second = octets:byte(1, 2)
        if #octets == 0 then deviates(item, "an INTEGER of no octets") end
        if second ~= nil and (first == 0 and second < 0x80 or first == 0xFF and second >= 0x80) then
            deviates(item, "a longer INTEGER than needed")
        end
        if #octets > 4 then deviates(item, "an INTEGER of more than 32 bits") end
    elseif member.kind == "text" then
        if octets:find("%z") then deviates(item, "a text with a zero octet, which ends it") end
        if not is_utf8(octets) then deviates(item, "a text that is not UTF-8") end
    end
    return after
end

-- Opens a SEQUENCE: where its contents begin and its scope.
function walk:enter(parent, item, at, stop)
    local identifier, contents, behind, shortest = header(self.s, at, stop)
    if identifier ~= 0x30 or (behind or 0) > stop then return self:misfit(parent, at, stop, described(0x30)) end
    judge_header(item, behind, shortest)
    return contents, { stop = behind or stop, indefinite = behind == nil }
end

function walk:ended(scope, at)
    if scope.indefinite then return at + 1 < scope.stop and is_end(self.s, at) end
    return at == scope.stop
end

-- Leaves a SEQUENCE: where what follows it begins.
function walk:leave(parent, scope, at)
    if not self:ended(scope, at) then return self:misfit(parent, at, scope.stop, "the end") end
    return scope.indefinite and at + 2 or at
end

-- One value of a member that may be a record.
function walk:any_value(parent, member, at, stop, depth, suffix)
    if member.kind ~= "record" then return self:value(parent, member, at, stop) end
    local item
    if parent ~= nil then
        local behind = element_end(self.s, at, stop)
        item = depth < most_depth and self:add(parent, member, at, math.min(behind or stop, stop)) or nil
        if item ~= nil then
            item:set_text(member.name .. (suffix or "") .. ": " .. member.record)
        else
            self.hidden = true
        end
    end
    return self:record(item, member.record, at, stop, depth + 1)
end

-- A member that holds many: returns where it ends, or nil.
function walk:list(parent, member, at, stop, depth)
    local contents, scope = self:enter(parent, parent, at, stop)
    if contents == nil then return nil end
    at = contents
    local count = 0
    while not self:ended(scope, at) do
        if at >= scope.stop then return self:misfit(parent, at, scope.stop, "an element or the end") end
        if member.held == "slots" and self.s:sub(at, at + 1) == "\5\0" then
            at = at + 2
        else
            at = self:any_value(parent, member, at, scope.stop, depth, "[" .. count .. "]")
            if at == nil then return nil end
        end
        count = count + 1
    end
    return self:leave(parent, scope, at)
end

-- A record: returns where it ends, or nil.
function walk:record(parent, name, at, stop, depth)
    if depth > 180 then
        self.hidden = true -- nobody reads so far; what lies there is passed over
        return (element_end(self.s, at, stop))
    end
    local contents, scope = self:enter(parent, parent, at, stop)
    if contents == nil then return nil end
    at = contents
    for _, member in ipairs(records[name]) do
        local wanted = member.identifier
        local there = at < scope.stop and self.s:byte(at) or nil
        if member.held == "list" or member.held == "slots" then
            at = self:list(parent, member, at, scope.stop, depth)
        elseif member.held ~= "optional" or there == wanted or there == wanted + 0x20 then
            at = self:any_value(parent, member, at, scope.stop, depth)
        end
        if at == nil then return nil end
    end
    return self:leave(parent, scope, at)
end

local function walk_over(s, name, tree, tvb, base)
    local walked = setmetatable({ s = s, tvb = tvb, base = base, items = 0 }, walk)
    return walked:record(tree, name, 1, #s + 1, 0), walked
end

local function fitting(s)
    local found = {}
    for _, name in ipairs(order) do
        if walk_over(s, name) ~= nil then table.insert(found, name) end
    end
    return found
end

-- The envelope at `offset`: its length; or nil and how many octets are missing at least (nil: none begins there).
local function envelope(tvb, offset)
    local left = tvb:reported_length_remaining(offset)
    local octets = tvb:raw(offset, math.min(left, most_octets))
    local start = octets:sub(1, 4)
    if #start < 4 then
        local is_start = ("\4"):find(start:sub(1, 1), 1, true) and (#start < 3 or start:sub(3, 3) == "\172")
        return nil, is_start and 4 - #start or nil
    end
    if not start:find("^\4.\172\220$") then return nil end
    if #octets > 4 and octets:byte(5) ~= 0x30 then return nil end
    local behind, missing = element_end(octets:sub(5), 1)
    if behind == nil then
        if missing == nil or #octets + missing > most_octets then return nil end
        return nil, missing
    end
    return behind + 3
end

local function show(tvb, pinfo, root, offset, length)
    local tree = root:add(zrasn, tvb(offset, length))
    tree:add(f_version, tvb(offset + 1, 1))
    local s = tvb:raw(offset + 4, length - 4)
    local name = zrasn.prefs.record
    local fit = {}
    if name == "" or records[name] == nil then
        fit = fitting(s)
        name = fit[1]
    end
    if name == nil then
        tree:add_proto_expert_info(e_misfit, "no record fits")
        pinfo.cols.info:append("[no record fits] ")
        return
    end
    tree:append_text(": " .. name)
    tree:add(f_record, tvb(offset, length), name):set_generated()
    if #fit > 1 then tree:add(f_fitting, tvb(offset, length), table.concat(fit, " ")):set_generated() end
    local _, walked = walk_over(s, name, tree, tvb, offset + 4)
    if walked.hidden then tree:add_proto_expert_info(e_hidden) end
    pinfo.cols.info:append(name .. " ")
end

function zrasn.dissector(tvb, pinfo, root)
    local offset = 0
    while offset < tvb:len() do
        local length, missing = envelope(tvb, offset)
        if length == nil then
            if missing == nil then break end
            pinfo.desegment_offset = offset
            pinfo.desegment_len = missing
            return tvb:len()
        end
        if offset == 0 then
            pinfo.cols.protocol = "ZRASN"
            pinfo.cols.info = ""
        end
        show(tvb, pinfo, root, offset, length)
        offset = offset + length
    end
    return offset
end

-- Any stream that begins with an envelope's header is taken.
local function is_envelope(tvb, pinfo, root)
    if tvb:len() < 5 or tvb:raw(0, 5):find("^\4.\172\2200") == nil then return false end
    local _, missing = envelope(tvb, 0)
    if _ == nil and missing == nil then return false end
    zrasn.dissector(tvb, pinfo, root)
    pinfo.conversation = zrasn
    return true
end

zrasn:register_heuristic("tcp", is_envelope)
zrasn:register_heuristic("udp", is_envelope)
DissectorTable.get("tcp.port"):add_for_decode_as(zrasn)
DissectorTable.get("udp.port"):add_for_decode_as(zrasn)
DissectorTable.get("wtap_encap"):add(wtap.USER0, zrasn)
