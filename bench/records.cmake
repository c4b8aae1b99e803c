# What is sent, as plain records: their fields are those of the schema.
get_target_property(descriptor_set virtual-modem-protos VIRTUAL_MODEM_DESCRIPTOR_SET)
set(records ${CMAKE_CURRENT_BINARY_DIR}/records.inc)
add_custom_command(
  OUTPUT ${records}
  COMMAND ${virtual_modem_python} ${CMAKE_CURRENT_LIST_DIR}/generate_records.py ${descriptor_set}
    ${records}
  DEPENDS ${virtual_modem_schema_inputs} ${CMAKE_CURRENT_LIST_DIR}/generate_records.py
  COMMENT "Generating the benchmark's records"
  VERBATIM)
add_custom_target(virtual-modem-records DEPENDS ${records})
