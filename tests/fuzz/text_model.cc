#include "text_model.h"

#include <algorithm>
#include <utility>

#include "wire_reader.h"

namespace virtual_modem::testing {
namespace {

bool IsDeclared(const FieldSchema& field, std::uint64_t number) {
  return SchemaOfEnum(field.type).Declares(static_cast<std::int32_t>(number));
}

class Editor {
 public:
  Editor(std::string& bytes, Edit edit, bool shape) : bytes_(bytes), edit_(edit), shape_(shape) {}

  bool wrong_type() const { return wrong_type_; }
  std::size_t unknown() const { return unknown_; }

  // False when the bytes break.
  bool EditMessage(const MessageSchema& schema, std::string_view in) {
    while (!in.empty()) {
      std::uint64_t value = 0;
      if (!wire::TakeVarint(&in, &value)) return Break(in);
      const auto tag = static_cast<std::uint32_t>(value);
      const FieldSchema* field = wire::FindField(schema, tag >> 3);
      const bool as_declared = field != nullptr && (tag & 7) == wire::TypeOf(field->kind);
      if (as_declared && wire::TypeOf(field->kind) == wire::kVarint) {
        if (!EditNumber(*field, &in)) return Break(in);
      } else if (as_declared && field->kind == Kind::kString) {
        std::string_view text;
        if (!wire::TakeBytes(&in, &text)) return Break(in);
        Overwrite(text, shape_ || field->subscriber_data);
      } else if (as_declared) {
        // Of a message that the input's end cuts, the beginning may be shown.
        if (!wire::TakeVarint(&in, &value)) return Break(in);
        const std::string_view below = in.substr(0, value);
        in.remove_prefix(below.size());
        if (!EditMessage(SchemaOf(field->type), below)) return false;
        if (below.size() < value) return Break(in);
      } else if (field != nullptr && (tag & 7) == wire::kBytes && IsListOfNumbers(*field)) {
        std::string_view list;
        if (!wire::TakeBytes(&in, &list)) return Break(in);
        while (!list.empty()) {
          if (!EditNumber(*field, &list)) return Break(list);
        }
      } else {
        wrong_type_ = wrong_type_ || field != nullptr;
        ++unknown_;
        if (!EditUnknown(tag, &in)) return Break(in);
      }
    }
    return true;
  }

 private:
  static bool IsListOfNumbers(const FieldSchema& field) {
    return field.label == Label::kRepeated && wire::TypeOf(field.kind) == wire::kVarint;
  }

  char* Place(std::string_view view) { return bytes_.data() + (view.data() - bytes_.data()); }

  // Nothing from there on may matter.
  bool Break(std::string_view from) {
    Overwrite({from.data(), bytes_.size() - static_cast<std::size_t>(from.data() - bytes_.data())},
              true);
    return false;
  }

  void Overwrite(std::string_view text, bool hidden) {
    char* at = Place(text);
    for (char* end = at + text.size(); at != end; ++at) {
      if (edit_ == Edit::kPlant) {
        *at = hidden ? kMarker : 'c';
      } else if (hidden) {
        *at = *at == kMarker ? 'm' : kMarker;
      }
    }
  }

  bool EditNumber(const FieldSchema& field, std::string_view* in) {
    const std::string_view start = *in;
    std::uint64_t value = 0;
    if (!wire::TakeVarint(in, &value)) return false;
    const std::string_view varint = start.substr(0, start.size() - in->size());
    if (field.kind == Kind::kEnum) {
      if (IsDeclared(field, value)) return true;
      ++unknown_;
      EditUnknownVarint(varint, &field);
    } else if (field.subscriber_data || (shape_ && field.label == Label::kRepeated)) {
      for (std::size_t i = 0; i < varint.size(); ++i) Place(varint)[i] ^= 0x2a;
    }
    return true;
  }

  // Another number of the same size, in as many bytes; undeclared where an enumeration is given.
  void EditUnknownVarint(std::string_view varint, const FieldSchema* enumeration) {
    std::uint64_t value = 0;
    std::string_view in = varint;
    wire::TakeVarint(&in, &value);
    const std::size_t size = wire::Varint(value).size();  // others may follow that add nothing
    const std::string before(varint);
    for (const char bits : {0x2a, 0x15, 0x40, 1}) {
      for (std::size_t i = 0; i < size && i < 9; ++i) Place(varint)[i] ^= bits;
      std::uint64_t changed = 0;
      in = varint;
      wire::TakeVarint(&in, &changed);
      if (wire::Varint(changed).size() == size &&
          (enumeration == nullptr || !IsDeclared(*enumeration, changed))) {
        return;
      }
      std::copy(before.begin(), before.end(), Place(varint));
    }
  }

  bool EditUnknown(std::uint32_t tag, std::string_view* in) {
    if (tag >> 3 == 0) return false;
    const std::string_view start = *in;
    std::uint64_t value = 0;
    std::string_view bytes;
    switch (tag & 7) {
      case wire::kVarint:
        if (!wire::TakeVarint(in, &value)) return false;
        EditUnknownVarint(start.substr(0, start.size() - in->size()), nullptr);
        return true;
      case wire::kFixed64:
      case wire::kFixed32:
        if (!wire::TakeRaw(in, (tag & 7) == wire::kFixed64 ? 8 : 4, &bytes)) return false;
        Overwrite(bytes, true);
        return true;
      case wire::kBytes:
        if (!wire::TakeBytes(in, &bytes)) return false;
        Overwrite(bytes, true);
        return true;
      case wire::kStart:
        while (wire::TakeVarint(in, &value)) {
          const auto inner = static_cast<std::uint32_t>(value);
          if ((inner & 7) == wire::kEnd) return inner >> 3 == tag >> 3;
          if (!EditUnknown(inner, in)) return false;
        }
        return false;
      default:
        return false;
    }
  }

  std::string& bytes_;
  const Edit edit_;
  const bool shape_;
  bool wrong_type_ = false;
  std::size_t unknown_ = 0;
};

// Takes a field that the message keeps as its own: its number, or its bytes. Null when there is
// none left: all others are unknown and follow.
const FieldSchema* TakeKnown(const MessageSchema& schema, std::string_view* in,
                             std::uint64_t* number, std::string_view* bytes) {
  std::string_view rest = *in;
  std::uint64_t tag = 0;
  if (!wire::TakeVarint(&rest, &tag)) return nullptr;
  const FieldSchema* field = wire::FindField(schema, tag >> 3);
  if (field == nullptr || (tag & 7) != wire::TypeOf(field->kind)) return nullptr;
  if (wire::TypeOf(field->kind) == wire::kBytes) {
    wire::TakeBytes(&rest, bytes);
  } else {
    wire::TakeVarint(&rest, number);
    if (field->kind == Kind::kEnum && !IsDeclared(*field, *number)) return nullptr;
  }
  *in = rest;
  return field;
}

std::string Examine(const MessageSchema& schema, std::string_view in, const std::string& path,
                    MessageModel& model) {
  std::string masked;
  std::vector<int> counts(schema.fields.size());
  std::uint64_t number = 0;
  std::string_view bytes;
  while (const FieldSchema* field = TakeKnown(schema, &in, &number, &bytes)) {
    const int place = counts[static_cast<std::size_t>(field - schema.fields.data())]++;
    if (field->kind == Kind::kMessage) {
      std::string below = path + std::string(field->name);
      if (field->label == Label::kRepeated) below += "[" + std::to_string(place) + "]";
      masked += wire::BytesField(field->number,
                                 Examine(SchemaOf(field->type), bytes, below += ".", model));
    } else if (field->kind == Kind::kString) {
      masked += field->subscriber_data
                    ? wire::BytesField(field->number, std::string(bytes.size(), 'X'))
                    : wire::BytesField(field->number, bytes);
    } else {
      const auto kept = field->subscriber_data ? 0 : static_cast<std::int64_t>(number);
      masked += wire::VarintField(field->number, kept);
    }
  }
  model.unknown_bytes += in.size();
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const FieldSchema& field = schema.fields[i];
    if (field.label == Label::kRequired && counts[i] == 0) {
      model.missing.push_back(path + std::string(field.name));
    }
  }
  return masked;
}

}  // namespace

Edited EditHidden(const MessageSchema& schema, std::string bytes, Edit edit, bool shape) {
  Edited edited{std::move(bytes), false, false, 0};
  Editor editor(edited.bytes, edit, shape);
  edited.malformed = !editor.EditMessage(schema, edited.bytes);
  edited.wrong_type = editor.wrong_type();
  edited.unknown = editor.unknown();
  return edited;
}

MessageModel ModelOf(const MessageSchema& schema, std::string_view bytes) {
  MessageModel model;
  model.masked = Examine(schema, bytes, "", model);
  std::sort(model.missing.begin(), model.missing.end());
  return model;
}

std::optional<std::int32_t> SerialIn(const MessageSchema& schema, std::string_view bytes) {
  std::uint64_t number = 0;
  std::string_view text;
  while (const FieldSchema* field = TakeKnown(schema, &bytes, &number, &text)) {
    if (field->name == "serial") return static_cast<std::int32_t>(number);
  }
  return std::nullopt;
}

}  // namespace virtual_modem::testing
