"""C++ for the pages: how to write and how to read one message, and a program that tries it all."""

import schema

TYPES = {"bool": "bool", "int32": "int32_t", "uint32": "uint32_t", "int64": "int64_t",
         "uint64": "uint64_t", "float": "float", "double": "double", "string": "const std::string&",
         "bytes": "const std::string&"}
# Values by the name of the field. Otherwise true, 1, an empty text, the first of an enumeration.
EXAMPLES = {"platformtype": "MTK", "address": '"112"', "number": '"112"', "dtmf": '"123#"'}


class Snippets:
    """Snippets for the messages of `units`."""

    def __init__(self, units):
        self.units = units
        self.declared = {m.name: m for unit in units for m in unit.messages + unit.enums}

    def of(self, message):
        """Two functions: one fills a message and writes it, one reads it and takes it apart."""
        lines = [f"std::string Write{message.name}() {{", f"  {message.cpp_name} message;"]
        required = [field for field in message.fields if field.label == "required"]
        others = [field for field in message.fields if field.label != "required"]
        taken = {"message"}
        for field in required:
            lines += self._set("message.", field, taken)
        if others:
            lines.append("  // Optional:")
        for field in others:
            lines += self._set("message.", field, taken)
        lines += ["  return message.SerializeAsString();", "}", "",
                  f"bool Read{message.name}(const std::string& bytes) {{",
                  f"  {message.cpp_name} message;",
                  "  if (!message.ParsePartialFromString(bytes) || !message.IsInitialized()) {",
                  "    return false;",
                  "  }"]
        for field in message.fields:
            get = f"{self._type(field)} {field.name} = message.{field.name}();"
            if field.label == "required":
                lines.append("  " + get)
            elif field.label == "optional":
                lines += [f"  if (message.has_{field.name}()) {{", "    " + get, "  }"]
            else:
                lines += [f"  for ({self._type(field)} element : message.{field.name}()) {{",
                          "    // Use element.", "  }"]
        return "\n".join(lines + ["  return true;", "}"])

    def program(self):
        """A program of all snippets. Status 1, with the names, when what one writes is not complete."""
        lines = [f"#include <{unit.file.replace('.proto', '.pb.h')}>" for unit in self.units]
        calls = []
        for message in (message for unit in self.units for message in unit.messages):
            lines.append(self.of(message))
            calls.append(f'  if (!Read{message.name}(Write{message.name}())) {{\n'
                         f'    std::printf("reference: C++ of {message.name} fails\\n");\n'
                         f'    failed = true;\n  }}')
        return "\n".join(["#include <cstdio>", *lines, "int main() {", "  bool failed = false;", *calls,
                          f'  std::printf("reference: C++ of {len(calls)} messages ran\\n");',
                          "  return failed;", "}", ""])

    def _type(self, field):
        if field.is_scalar:
            return TYPES[field.type]
        declared = self.declared[field.type]
        if isinstance(declared, schema.Enum):
            return declared.cpp_name
        return f"const {declared.cpp_name}&"

    def _set(self, owner, field, taken):
        """Lines that set one field; of a record, what it requires or else all it has."""
        declared = self.declared.get(field.type) if not field.is_scalar else None
        repeated = field.label == "repeated"
        if not isinstance(declared, schema.Message):
            return [f"  {owner}{'add' if repeated else 'set'}_{field.name}({self._value(field)});"]
        variable = field.name
        while variable in taken:
            variable += "_"
        taken.add(variable)
        lines = [f"  {declared.cpp_name}* {variable} = "
                 f"{owner}{'add' if repeated else 'mutable'}_{field.name}();"]
        wanted = [inner for inner in declared.fields if inner.label == "required"]
        for inner in wanted or declared.fields:
            lines += self._set(f"{variable}->", inner, taken)
        return lines

    def _value(self, field):
        if field.name in EXAMPLES:
            return EXAMPLES[field.name]
        if not field.is_scalar:
            enum = self.declared[field.type]
            return "::".join(enum.cpp_name.split("::")[:-1] + [enum.values[0].name])
        if field.type == "bool":
            return "true"
        if field.type in ("string", "bytes"):
            return '""'
        return "1"
