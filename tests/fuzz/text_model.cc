#include "text_model.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "wire_reader.h"

namespace virtual_modem::testing {
namespace {

class Editor {
 public:
  Editor(std::string& bytes, Edit edit, bool shape) : bytes_(bytes), edit_(edit), shape_(shape) {}

  bool wrong_type() const { return wrong_type_; }

  // False when the bytes break.
  bool EditMessage(const MessageSchema& schema, std::string_view in) {
    while (!in.empty()) {
      std::uint64_t value = 0;
      if (!TakeVarint(&in, &value)) return Break(in);
      const auto tag = static_cast<std::uint32_t>(value);
      const FieldSchema* field = wire::FindField(schema, tag >> 3);
      const bool as_declared = field != nullptr && (tag & 7) == wire::TypeOf(field->kind);
      if (as_declared && wire::TypeOf(field->kind) == wire::kVarint) {
        if (!EditNumber(*field, &in)) return Break(in);
      } else if (as_declared && field->kind == Kind::kString) {
        std::string_view text;
        if (!TakeBytes(&in, &text)) return Break(in);
        Overwrite(text, shape_ || field->subscriber_data);
      } else if (as_declared) {
        // Of a message that the input's end cuts, the beginning may be shown.
        if (!TakeVarint(&in, &value)) return Break(in);
        const std::string_view below = in.substr(0, value);
        in.remove_prefix(below.size());
        if (!EditMessage(SchemaOf(field->type), below)) return false;
        if (below.size() < value) return Break(in);
      } else if (field != nullptr && (tag & 7) == wire::kBytes && IsListOfNumbers(*field)) {
        std::string_view list;
        if (!TakeBytes(&in, &list)) return Break(in);
        while (!list.empty()) {
          if (!EditNumber(*field, &list)) return Break(list);
        }
      } else {
        wrong_type_ = wrong_type_ || field != nullptr;
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

  // What there is of a varint that is cut, or too long, is hidden.
  bool TakeVarint(std::string_view* in, std::uint64_t* value) {
    const std::string_view start = *in;
    if (wire::TakeVarint(in, value)) return true;
    for (std::size_t i = 0; i < start.size() - in->size(); ++i) Place(start)[i] ^= 0x2a;
    return false;
  }
  bool TakeBytes(std::string_view* in, std::string_view* bytes) {
    std::uint64_t size = 0;
    return TakeVarint(in, &size) && wire::TakeRaw(in, size, bytes);
  }

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
    if (!TakeVarint(in, &value)) return false;
    if (field.subscriber_data || (shape_ && IsListOfNumbers(field) && field.kind != Kind::kEnum)) {
      EditVarint(start.substr(0, start.size() - in->size()));
    }
    return true;
  }

  // Another number that takes as many bytes, also when it is written anew.
  void EditVarint(std::string_view varint) {
    std::size_t top = 0;
    for (std::size_t i = 0; i < varint.size(); ++i) {
      if ((varint[i] & (i < 9 ? 0x7f : 1)) != 0) top = i;  // what is beyond bit 63 does not count
    }
    for (std::size_t i = 0; i < top; ++i) Place(varint)[i] ^= 0x2a;
    char& byte = *(Place(varint) + top);
    if (top < 9 && (byte & 0x7f) != 0) byte ^= (byte & 0x7f) == 2 ? 1 : 2;
  }

  bool EditUnknown(std::uint32_t tag, std::string_view* in) {
    if (tag >> 3 == 0) return false;
    const std::string_view start = *in;
    std::uint64_t value = 0;
    std::string_view bytes;
    switch (tag & 7) {
      case wire::kVarint:
        if (!TakeVarint(in, &value)) return false;
        EditVarint(start.substr(0, start.size() - in->size()));
        return true;
      case wire::kFixed64:
      case wire::kFixed32:
        if (!wire::TakeRaw(in, (tag & 7) == wire::kFixed64 ? 8 : 4, &bytes)) return false;
        Overwrite(bytes, true);
        return true;
      case wire::kBytes:
        if (!TakeBytes(in, &bytes)) return false;
        Overwrite(bytes, true);
        return true;
      case wire::kStart:
        while (TakeVarint(in, &value)) {
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
};

}  // namespace

Edited EditHidden(const MessageSchema& schema, std::string bytes, Edit edit, bool shape) {
  Edited edited{std::move(bytes), false, false};
  Editor editor(edited.bytes, edit, shape);
  edited.malformed = !editor.EditMessage(schema, edited.bytes);
  edited.wrong_type = editor.wrong_type();
  return edited;
}

}  // namespace virtual_modem::testing
