# Code generation for the library, and for the runtime when that is built from source: one place, so
# that both sides of the boundary between them are compiled alike.
function(virtual_modem_tune_shared_library target)
  # Calls inside the library go straight to their function, not through the PLT. Functions only:
  # with plain -Bsymbolic an executable's copy relocation would give two copies of a default instance.
  target_compile_options(${target} PRIVATE -fvisibility-inlines-hidden -fno-semantic-interposition)
  target_link_options(${target} PRIVATE LINKER:-Bsymbolic-functions)
endfunction()
