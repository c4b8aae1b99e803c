# What is sent, as plain records: their fields are those of the schema.
set(records ${CMAKE_CURRENT_BINARY_DIR}/records.inc)
virtual_modem_generate(${records} bench/generate_records.py)
add_custom_target(virtual-modem-records DEPENDS ${records})
