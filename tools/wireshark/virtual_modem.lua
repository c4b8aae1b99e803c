-- Wireshark dissector for captured messages of the virtual modem, in the form that docs/captures.md
-- describes. Shows each message field by field, joins responses to requests by their serial, and
-- says what a receiver would refuse.
--
--   tshark -X lua_script:virtual_modem.lua -r FILE
--
-- Keep to what Lua 5.2 and 5.4 have in common: Wireshark has come with both.

-- The build puts the schema in place of this line (tools/embed_schema.py).
local MESSAGES, ENUMS = {}, {}
if not next(MESSAGES) then
  error("this script has no schema; load share/virtual-modem-protos/wireshark/virtual_modem.lua"
    .. " of a build or an installation")
end

-- A plugin folder and the command line may both name the script: the first one serves.
if _G.virtual_modem_is_loaded then
  return
end
_G.virtual_modem_is_loaded = true

local virtual_modem = Proto("virtual_modem", "Virtual modem")

local HEADER = 8
local RECEIVERS = { [47601] = "telephony", [47602] = "modem" }
local OPERATIONS = { -- those of the example
  [0] = "by type",
  [1] = "registration",
  [2] = "operator",
  [3] = "current calls",
  [4] = "call state changed",
  [5] = "last call failure cause",
  [6] = "card status",
  [7] = "signal strength",
  [8] = "IMS call",
  [9] = "merge into a conference",
}

-- Wire types, and the limits of the protobuf runtime.
local VARINT, FIXED64, LENGTH, GROUP, END_GROUP, FIXED32 = 0, 1, 2, 3, 4, 5
local WIRE_NAMES = { [0] = "varint", "64-bit", "length-delimited", "group", "", "32-bit" }
local MAX_TAG_BYTES, MAX_LENGTH_BYTES, MAX_VARINT_BYTES = 5, 5, 10
local MAX_DEPTH = 100

-- What one message may add to the expert information and to the Info column.
local MAX_FINDINGS, MAX_SUMMARY = 50, 40

-- ---- Fields -------------------------------------------------------------------------------------

local fields = {
  operation = ProtoField.uint8("virtual_modem.operation", "Operation", base.DEC, OPERATIONS),
  type_length = ProtoField.uint8("virtual_modem.type_length", "Length of type name"),
  length = ProtoField.uint32("virtual_modem.length", "Length of message"),
  type = ProtoField.string("virtual_modem.type", "Type"),
  serial = ProtoField.int32("virtual_modem.serial", "Serial"),
  error = ProtoField.int32("virtual_modem.error", "Error", base.DEC, ENUMS.Radio_Errno),
  request_in = ProtoField.framenum("virtual_modem.request_in", "Request in", base.NONE,
    frametype.REQUEST),
  response_in = ProtoField.framenum("virtual_modem.response_in", "Response in", base.NONE,
    frametype.RESPONSE),
  response_time = ProtoField.relative_time("virtual_modem.response_time", "Response time"),
  message = ProtoField.none("virtual_modem.message", "Message"),
  unknown = ProtoField.bytes("virtual_modem.unknown_field.bytes", "Unknown field"),
}

local function expert_info(name, text, group, severity)
  return ProtoExpert.new("virtual_modem." .. name, text, expert.group[group],
    expert.severity[severity])
end
local experts = {
  malformed = expert_info("malformed", "Malformed", "MALFORMED", "ERROR"),
  incomplete = expert_info("incomplete", "A required field is missing", "PROTOCOL", "WARN"),
  undeclared = expert_info("undeclared", "Number that its enumeration does not declare",
    "PROTOCOL", "WARN"),
  wire_type = expert_info("wire_type", "Field with a wire type that is not its own", "PROTOCOL",
    "WARN"),
  unknown_type = expert_info("unknown_type", "Type that the schema does not have", "UNDECODED",
    "WARN"),
  unknown_field = expert_info("unknown_field", "Field that the type does not have", "UNDECODED",
    "NOTE"),
  cut = expert_info("cut", "Cut by the capture", "UNDECODED", "NOTE"),
}
virtual_modem.experts = experts

local SCALARS = {
  int32 = ftypes.INT32,
  uint32 = ftypes.UINT32,
  int64 = ftypes.INT64,
  uint64 = ftypes.UINT64,
  bool = ftypes.BOOLEAN,
  string = ftypes.STRING,
  bytes = ftypes.STRING,
  enum = ftypes.INT32,
}
local registered = {}
for _, field in pairs(fields) do
  registered[#registered + 1] = field
end
-- Gives every field of the schema its filter name, virtual_modem.TYPE.FIELD.
for name, message in pairs(MESSAGES) do
  message.name = name
  message.by_number = {}
  for _, field in ipairs(message) do
    local enum = ENUMS[field.type]
    field.enum = enum
    field.message = MESSAGES[field.type]
    local ftype = field.message and ftypes.NONE or SCALARS[enum and "enum" or field.type]
    field.wire_type = (field.message or ftype == ftypes.STRING) and LENGTH or VARINT
    local number = field.wire_type == VARINT and ftype ~= ftypes.BOOLEAN
    field.proto = ProtoField.new(field.name, "virtual_modem." .. name .. "." .. field.name, ftype,
      enum, number and base.DEC or nil, nil, field.comment)
    registered[#registered + 1] = field.proto
    message.by_number[field.number] = field
  end
end
virtual_modem.fields = registered

-- ---- Reading ------------------------------------------------------------------------------------
-- A walk reads the bytes of one message as the runtime's parser does, and shows what it comes by:
--   bytes     what was captured of the message
--   buffer    where they stand: offset `base` is the first of them
--   at        how many are read
--   findings  how many were reported
-- `stop` is where the message that is being read ends, which may be after what was captured.

local function malformed(at, why)
  error({ at = at, why = why }, 0)
end

local function range(walk, from, to)
  return walk.buffer(walk.base + from, math.min(to, #walk.bytes) - from)
end

local function report(walk, item, finding, text)
  walk.findings = walk.findings + 1
  if walk.findings <= MAX_FINDINGS then
    item:add_proto_expert_info(finding, text)
  elseif walk.findings == MAX_FINDINGS + 1 then
    item:add_proto_expert_info(finding, "and more of the kind; only the first are shown")
  end
end

-- Makes sure that so many bytes are left, and were captured.
local function need(walk, size, stop)
  local short = size - (stop - walk.at)
  if short > 0 then
    malformed(walk.at, "the message ends too early, bytes missing: " .. short)
  elseif size > #walk.bytes - walk.at then
    error({ cut = true }, 0)
  end
end

-- The lower 32 bits and the upper 32.
local function read_varint(walk, stop, max_bytes)
  local low, high = 0, 0
  local weight = 1
  for i = 0, max_bytes - 1 do
    need(walk, i + 1, stop)
    local byte = walk.bytes:byte(walk.at + i + 1)
    local part = byte % 0x80
    if i < 4 then
      low = low + part * weight
      weight = weight * 0x80
    elseif i == 4 then
      low = low + part % 0x10 * weight
      high = math.floor(part / 0x10)
      weight = 8
    else
      high = high + (i < 9 and part or part % 2) * weight -- what is after bit 63 does not count
      weight = weight * 0x80
    end
    if byte < 0x80 then
      walk.at = walk.at + i + 1
      return low, high
    end
  end
  malformed(walk.at, string.format("a number is longer than %d bytes", max_bytes))
end

local function read_tag(walk, stop)
  local start = walk.at
  local tag = read_varint(walk, stop, MAX_TAG_BYTES)
  local number = math.floor(tag / 8)
  if number == 0 then
    malformed(start, "a field has number 0")
  end
  return number, tag % 8
end

local function read_length(walk, stop)
  local length, high = read_varint(walk, stop, MAX_LENGTH_BYTES)
  if high > 0 or length > stop - walk.at then
    malformed(walk.at, string.format("%s bytes announced, %d left in the message",
      high > 0 and "over 4 billion" or length, stop - walk.at))
  end
  return length
end

local function deeper(walk, start)
  walk.depth = walk.depth + 1
  if walk.depth > MAX_DEPTH then
    malformed(start, "more than 100 levels of nesting")
  end
end

local skip_value

local function skip_group(walk, number, start, stop)
  deeper(walk, start)
  while true do
    local at = walk.at
    local inner, wire_type = read_tag(walk, stop)
    if wire_type == END_GROUP then
      if inner ~= number then
        malformed(at, "another group ends than was begun")
      end
      walk.depth = walk.depth - 1
      return
    end
    skip_value(walk, inner, wire_type, at, stop)
  end
end

-- Skips the value of a field whose tag, at `start`, was read.
function skip_value(walk, number, wire_type, start, stop)
  local size = 0
  if wire_type == VARINT then
    read_varint(walk, stop, MAX_VARINT_BYTES)
  elseif wire_type == FIXED64 then
    size = 8
  elseif wire_type == FIXED32 then
    size = 4
  elseif wire_type == LENGTH then
    size = read_length(walk, stop)
  elseif wire_type == GROUP then
    skip_group(walk, number, start, stop)
  elseif wire_type == END_GROUP then
    malformed(start, "a group ends that was not begun")
  else
    malformed(start, "there is no wire type " .. wire_type)
  end
  need(walk, size, stop)
  walk.at = walk.at + size
end

-- ---- Showing ------------------------------------------------------------------------------------

local function escape(bytes)
  return (bytes:gsub(".", function(byte) return string.format("\\x%02x", byte:byte()) end))
end

-- Text that no terminal takes for a command: controls, also C1 and those of writing direction, and
-- bytes that are not UTF-8, with the character before them, are escaped.
local function printable(text)
  return (text:gsub("[%z\1-\31\127]", escape):gsub("[\128-\255][\128-\191]*", function(char)
    local whole = char:find("^[\194-\223].$") or char:find("^[\224-\239]..$")
      or char:find("^[\240-\244]...$")
    local refused = not whole
      or char:find("^\194[\128-\159]") or char == "\216\156" -- C1; Arabic letter mark
      or char:find("^\226\128[\142\143\168-\174]") or char:find("^\226\129[\166-\169]")
      or char:find("^\224[\128-\159]") or char:find("^\237[\160-\191]") -- long form; surrogate
      or char:find("^\240[\128-\143]") or char:find("^\244[\144-\191]") -- long form; too large
      or char == "\239\191\190" or char == "\239\191\191" -- no characters, nor fit for XML
    return refused and escape(char) or char
  end))
end

-- What a message holds: node.present[number], node.children (nodes of its records), and for the
-- message itself, which has a summary, node.values[name].
local function new_node(message, item)
  return { message = message, item = item, present = {}, children = {}, records = {} }
end

local function summarize(node, field, value, text)
  if node.summary then
    node.values[field.name] = value
    if #node.summary < MAX_SUMMARY then
      node.summary[#node.summary + 1] = field.name .. "=" .. text
    end
  end
end

-- Reads a number of the field; what came before it in the field begins at `start`.
local function read_number(walk, field, start, stop, tree, node)
  local low, high = read_varint(walk, stop, MAX_VARINT_BYTES)
  local where = range(walk, start, walk.at)
  local value = low
  if field.type == "bool" then
    value = high > 0 or low ~= 0
  elseif field.type == "int64" then
    value = Int64(low, high)
  elseif field.type == "uint64" then
    value = UInt64(low, high)
  elseif field.type ~= "uint32" and low >= 0x80000000 then
    value = low - 0x100000000
  end
  local item = tree:add(field.proto, where, value)
  local name = field.enum and field.enum[value]
  if field.enum and not name then
    report(walk, item, experts.undeclared, string.format(
      "%d is not declared in %s: a receiver takes the field for absent", value, field.type))
  else
    node.present[field.number] = true
  end
  summarize(node, field, value, name or tostring(value))
end

local read_message

local function read_record(walk, field, start, stop, tree, node)
  local size = read_length(walk, stop)
  deeper(walk, start)
  local item = tree:add(field.proto, range(walk, start, walk.at + size))
  local child = node.records[field.number]
  if field.label == "repeated" or not child then -- else it merges with the one before
    child = new_node(field.message, item)
    node.records[field.number] = child
    node.children[#node.children + 1] = child
  end
  item:append_text(": " .. field.type)
  node.present[field.number] = true
  read_message(walk, walk.at + size, item, child)
  walk.depth = walk.depth - 1
end

local function read_string(walk, field, start, stop, tree, node)
  local size = read_length(walk, stop)
  need(walk, size, stop)
  local text = printable(walk.bytes:sub(walk.at + 1, walk.at + size))
  walk.at = walk.at + size
  tree:add(field.proto, range(walk, start, walk.at), text)
  node.present[field.number] = true
  summarize(node, field, text, text)
end

local function read_packed(walk, field, start, stop, tree, node)
  local size = read_length(walk, stop)
  stop = walk.at + size
  while walk.at < stop do
    read_number(walk, field, start, stop, tree, node)
    start = walk.at
  end
end

local function show_unknown(walk, number, wire_type, start, tree)
  local item = tree:add(fields.unknown, range(walk, start, walk.at))
  item:set_text(string.format("Unknown field %d, %s, %d bytes", number, WIRE_NAMES[wire_type],
    walk.at - start))
  return item
end

-- Reads fields up to `stop`.
function read_message(walk, stop, tree, node)
  while walk.at < stop do
    local start = walk.at
    local number, wire_type = read_tag(walk, stop)
    local field = node.message.by_number[number]
    if field and wire_type == field.wire_type then
      local read = field.message and read_record or wire_type == LENGTH and read_string
        or read_number
      read(walk, field, start, stop, tree, node)
    elseif field and wire_type == LENGTH and field.label == "repeated" then
      read_packed(walk, field, start, stop, tree, node)
    else
      skip_value(walk, number, wire_type, start, stop)
      local item = show_unknown(walk, number, wire_type, start, tree)
      if field then
        report(walk, item, experts.wire_type, string.format(
          "%s came as %s: a receiver takes it for unknown", field.name, WIRE_NAMES[wire_type]))
      else
        report(walk, item, experts.unknown_field, string.format("%s has no field %d",
          node.message.name, number))
      end
    end
  end
end

local function report_missing(walk, node)
  for _, field in ipairs(node.message) do
    if field.label == "required" and not node.present[field.number] then
      report(walk, node.item, experts.incomplete, string.format("required %s.%s is missing",
        node.message.name, field.name))
    end
  end
  for _, child in ipairs(node.children) do
    report_missing(walk, child)
  end
end

-- Shows the message of the type in the buffer from `base` on, `size` bytes long of which the
-- capture may hold fewer. Returns its node.
local function show_message(buffer, base, size, message, tree)
  local captured = math.min(size, buffer:len() - base)
  local item = tree:add(fields.message, buffer(base, captured))
  item:set_text(message.name)
  local node = new_node(message, item)
  node.summary, node.values = {}, {}
  local walk = { bytes = captured > 0 and buffer:raw(base, captured) or "", buffer = buffer,
    base = base, at = 0, depth = 0, findings = 0 }
  local ok, failure = pcall(read_message, walk, size, item, node)
  if ok then
    report_missing(walk, node)
  elseif type(failure) ~= "table" then
    error(failure, 0)
  elseif failure.cut then
    item:add_proto_expert_info(experts.cut, string.format(
      "The capture holds %d of the message's %d bytes", captured, size))
  else
    item:add_proto_expert_info(experts.malformed, string.format("Malformed at byte %d: %s",
      failure.at, failure.why))
  end
  return node
end

-- ---- Requests and their responses ---------------------------------------------------------------

local latest = {} -- request by serial and who asked whom
local answers = {} -- by number of the packet that asks
local questions = {} -- by number of the packet that answers

function virtual_modem.init()
  latest, answers, questions = {}, {}, {}
end

-- Remembers the packet on the first pass over the capture, which goes in order.
local function pair(packet, kind, serial)
  if packet.visited or packet.in_error_pkt then
    return
  end
  local here = { frame = packet.number, time = packet.rel_ts }
  local source = tostring(packet.src) .. " " .. packet.src_port
  local target = tostring(packet.dst) .. " " .. packet.dst_port
  if kind == "request" then
    latest[source .. " " .. target .. " " .. serial] = here
  elseif kind == "response" then
    local request = latest[target .. " " .. source .. " " .. serial]
    if request then
      questions[here.frame] = request
      answers[request.frame] = answers[request.frame] or here
    end
  end
end

local function show_pair(packet, tree)
  local question, answer = questions[packet.number], answers[packet.number]
  if question then
    tree:add(fields.request_in, question.frame):set_generated()
    local seconds, fraction = math.modf(packet.rel_ts - question.time)
    tree:add(fields.response_time,
      NSTime.new(seconds, math.floor(fraction * 1e9 + 0.5))):set_generated()
  end
  if answer then
    tree:add(fields.response_in, answer.frame):set_generated()
  end
end

-- ---- The dissector ------------------------------------------------------------------------------

local function dissect_frame(buffer, packet, frame)
  local captured = buffer:len()
  local function cut()
    frame:add_proto_expert_info(experts.cut, "The capture ends inside the frame's header")
  end
  local there = buffer:reported_len()
  if there < HEADER then
    return frame:add_proto_expert_info(experts.malformed, "The frame ends inside its header")
  elseif captured < HEADER then
    return cut()
  end
  local operation = buffer(2, 1):uint()
  frame:add(fields.operation, buffer(2, 1))
  frame:add(fields.type_length, buffer(3, 1))
  frame:add(fields.length, buffer(4, 4))
  local name_size, size = buffer(3, 1):uint(), buffer(4, 4):uint()
  local start = HEADER + name_size
  if name_size == 0 then
    return frame:add_proto_expert_info(experts.malformed, "The frame names no type")
  elseif start + size ~= there then
    frame:add_proto_expert_info(experts.malformed, string.format(
      "The frame should have %d bytes and has %d", start + size, there))
  end
  if math.min(start, there) > captured then
    return cut()
  elseif start > there then
    return
  end

  local name = printable(buffer:raw(HEADER, name_size))
  frame:add(fields.type, buffer(HEADER, name_size), name)
  frame:append_text(", " .. name)
  packet.cols.info:append(name .. " to " .. (RECEIVERS[packet.dst_port] or packet.dst_port))
  if operation ~= 0 then
    packet.cols.info:append(" (" .. (OPERATIONS[operation] or "operation " .. operation) .. ")")
  end
  if start + size ~= there then
    return
  end
  local message = MESSAGES[name]
  if not message then
    frame:add_proto_expert_info(experts.unknown_type, "The schema has no type " .. name)
    return
  end

  local node = show_message(buffer, start, size, message, frame)
  local serial, outcome = node.values.serial, node.values.error
  if serial then
    frame:add(fields.serial, serial):set_generated()
    frame:append_text(", serial " .. string.format("%d", serial))
    pair(packet, message.kind, serial)
    show_pair(packet, frame)
  end
  if outcome then
    frame:add(fields.error, outcome):set_generated()
  end
  if #node.summary > 0 then
    packet.cols.info:append(" " .. table.concat(node.summary, " "))
  end
end

function virtual_modem.dissector(buffer, packet, tree)
  if buffer:len() < 2 or buffer:raw(0, 2) ~= "VM" then
    return 0
  end
  packet.cols.protocol = "VirtualModem"
  packet.cols.info = ""
  dissect_frame(buffer, packet, tree:add(virtual_modem, buffer()))
  return buffer:len()
end

local ports = DissectorTable.get("udp.port")
for port in pairs(RECEIVERS) do
  ports:add(port, virtual_modem)
end
