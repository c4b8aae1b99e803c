-- Wireshark dissector for the frame in which the example exchange sends its messages
-- (examples/call_exchange/frame.h): shows the frame and hands the message to the protobuf
-- dissector under its own type. That one finds the types in the schema files:
--
--   tshark -X lua_script:virtual_modem.lua \
--     -o 'uat:protobuf_search_paths:"PREFIX/share/virtual-modem-protos/proto","TRUE"' -r FILE
--
-- with PREFIX absolute. docs/inspect.md has the whole story.

local virtual_modem = Proto("virtual_modem", "Virtual modem frame")

local operations = {
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

local operation = ProtoField.uint8("virtual_modem.operation", "Operation", base.DEC, operations)
local type_length = ProtoField.uint8("virtual_modem.type_length", "Length of type name")
local length = ProtoField.uint32("virtual_modem.length", "Length of message")
local message_type = ProtoField.string("virtual_modem.type", "Type", base.ASCII)
virtual_modem.fields = { operation, type_length, length, message_type }

local malformed = ProtoExpert.new("virtual_modem.malformed", "Frame is cut short or has bytes to spare",
  expert.group.MALFORMED, expert.severity.ERROR)
virtual_modem.experts = { malformed }

local HEADER = 8
local RECEIVERS = { [47601] = "telephony", [47602] = "modem" }
local protobuf = Dissector.get("protobuf")

function virtual_modem.dissector(buffer, packet, tree)
  if buffer:len() < HEADER or buffer(0, 2):string() ~= "VM" then
    return 0
  end
  packet.cols.protocol = "VirtualModem"
  local frame = tree:add(virtual_modem, buffer())
  frame:add(operation, buffer(2, 1))
  frame:add(type_length, buffer(3, 1))
  frame:add(length, buffer(4, 4))
  local name_size = buffer(3, 1):uint()
  local start = HEADER + name_size
  if name_size == 0 or start + buffer(4, 4):uint() ~= buffer:len() then
    frame:add_proto_expert_info(malformed)
    return buffer:len()
  end

  local name = buffer(HEADER, name_size)
  frame:add(message_type, name)
  frame:append_text(", " .. name:string())
  packet.cols.info = "to " .. (RECEIVERS[packet.dst_port] or packet.dst_port)
  packet.cols.info:fence() -- or the protobuf dissector would replace it
  if start < buffer:len() then -- else the message is empty: nothing to dissect
    packet.private["pb_msg_type"] = "message," .. name:string()
    protobuf:call(buffer(start):tvb(), packet, tree)
  end
  local code = buffer(2, 1):uint()
  if code ~= 0 then
    packet.cols.info:append(" (" .. (operations[code] or "operation " .. code) .. ")")
  end
  return buffer:len()
end

-- The ports that --pcap writes.
local ports = DissectorTable.get("udp.port")
for port in pairs(RECEIVERS) do
  ports:add(port, virtual_modem)
end
