#include "samples/cell_buffer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

#include "support/wire_writer.h"

namespace dorvex::samples {
namespace {

using nlohmann::json;
using testing::encodeLittleEndian;

constexpr int kVersion = 5;
constexpr int kNoCell = 0xFFFF;

struct Type {
  std::string_view name;
  char number;
};

constexpr std::array<Type, 9> kTypes = {{{"empty", 0},
                                         {"number", 2},
                                         {"text", 3},
                                         {"date", 5},
                                         {"bool", 6},
                                         {"duration", 7},
                                         {"error", 8},
                                         {"rich", 9},
                                         {"currency", 10}}};

enum class Form { kDecimal, kDouble, kKey };

struct Field {
  std::string_view name;
  Form form;
  std::uint32_t bit;
};

// In the order in which they stand in a cell.
constexpr std::array<Field, 16> kFields = {{{"decimal", Form::kDecimal, 0x1},
                                            {"double", Form::kDouble, 0x2},
                                            {"seconds", Form::kDouble, 0x4},
                                            {"string", Form::kKey, 0x8},
                                            {"rich", Form::kKey, 0x10},
                                            {"formula", Form::kKey, 0x200},
                                            {"control", Form::kKey, 0x400},
                                            {"error", Form::kKey, 0x800},
                                            {"format_kind", Form::kKey, 0x1000},
                                            {"number_format", Form::kKey, 0x2000},
                                            {"currency_format", Form::kKey, 0x4000},
                                            {"date_format", Form::kKey, 0x8000},
                                            {"duration_format", Form::kKey, 0x10000},
                                            {"text_format", Form::kKey, 0x20000},
                                            {"bool_format", Form::kKey, 0x40000},
                                            {"comment", Form::kKey, 0x80000}}};

// The fields of older cells, in their order. What the second mask announces stands last.
struct OlderField {
  std::string_view name;
  Form form;
  std::uint32_t bit;
  bool isOfSecondMask = false;
};

constexpr std::array<OlderField, 21> kOlderFields = {
    {{"cell_style", Form::kKey, 0x2},
     {"text_style", Form::kKey, 0x80},
     {"conditional_style", Form::kKey, 0x400},
     {"conditional_rule", Form::kKey, 0x800},
     {"format", Form::kKey, 0x4},
     {"formula", Form::kKey, 0x8},
     {"error", Form::kKey, 0x100},
     {"rich", Form::kKey, 0x200},
     {"comment", Form::kKey, 0x1000},
     {"import_warning", Form::kKey, 0x2000},
     {"string", Form::kKey, 0x10},
     {"double", Form::kDouble, 0x20},
     {"seconds", Form::kDouble, 0x40},
     {"number_format", Form::kKey, 0x10000, true},
     {"currency_format", Form::kKey, 0x80000, true},
     {"date_format", Form::kKey, 0x20000, true},
     {"duration_format", Form::kKey, 0x40000, true},
     {"control_format", Form::kKey, 0x100000, true},
     {"custom_format", Form::kKey, 0x200000, true},
     {"base_format", Form::kKey, 0x400000, true},
     {"popup_format", Form::kKey, 0x800000, true}}};

char typeNumber(const std::string& name) {
  const auto* const type = std::ranges::find(kTypes, name, &Type::name);
  if (type == kTypes.end()) throw std::runtime_error("no type of cells: " + name);
  return type->number;
}

// A decimal128 in binary integer form: the coefficient in the low 113 bits, the
// exponent with a bias behind it, the sign last.
std::string decimal128(std::string_view text) {
  constexpr int kBias = 6176;
  constexpr int kExponentAt = 113 - 64;
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  std::uint64_t coefficient = 0;
  int decimals = 0;
  bool behindPoint = false;
  for (const char digit : text) {
    if (digit == '.') {
      behindPoint = true;
      continue;
    }
    if (digit < '0' || digit > '9') throw std::runtime_error("no number: " + std::string(text));
    coefficient = coefficient * 10 + static_cast<std::uint64_t>(digit - '0');
    decimals += behindPoint ? 1 : 0;
  }
  const auto exponent = static_cast<std::uint64_t>(kBias - decimals);
  const std::uint64_t sign = negative ? std::uint64_t{1} << 63U : 0;
  return encodeLittleEndian(coefficient, 8) +
         encodeLittleEndian(sign | exponent << unsigned{kExponentAt}, 8);
}

std::string fieldBytes(Form form, const json& value) {
  switch (form) {
    case Form::kDecimal:
      return decimal128(value.get<std::string>());
    case Form::kDouble:
      return encodeLittleEndian(std::bit_cast<std::uint64_t>(value.get<double>()), 8);
    case Form::kKey:
      return encodeLittleEndian(value.get<std::uint32_t>(), 4);
  }
  throw std::logic_error("a form of fields without bytes");
}

std::string makeCell(const json& cell) {
  std::uint32_t mask = 0;
  std::string fields;
  for (const Field& field : kFields) {
    const auto value = cell.find(field.name);
    if (value == cell.end()) continue;
    mask |= field.bit;
    fields += fieldBytes(field.form, *value);
  }
  const std::string head = {static_cast<char>(kVersion), typeNumber(cell.at("type"))};
  return head + std::string(6, '\0') + encodeLittleEndian(mask, 4) + fields;
}

// The type stands in another byte from version 4 on; the second mask came with version 2.
std::string makeOlderCell(const json& cell, int version) {
  constexpr int kFirstWithSecondMask = 2;
  constexpr int kFirstWithTypeInFront = 4;
  std::uint32_t mask = 0;
  std::uint32_t secondMask = 0;
  std::string fields;
  for (const OlderField& field : kOlderFields) {
    const auto value = cell.find(field.name);
    if (value == cell.end()) continue;
    (field.isOfSecondMask ? secondMask : mask) |= field.bit;
    fields += fieldBytes(field.form, *value);
  }
  std::string head = {static_cast<char>(version), 0, 0, 0};
  head[version < kFirstWithTypeInFront ? 2 : 1] = typeNumber(cell.at("type"));
  head += encodeLittleEndian(mask, 4);
  if (version >= kFirstWithSecondMask) head += encodeLittleEndian(secondMask, 4);
  return head + fields;
}

}  // namespace

RowBuffers makeRow(const json& row) {
  RowBuffers buffers;
  for (const json& cell : row) {
    if (cell.is_null()) {
      buffers.offsets += encodeLittleEndian(kNoCell, 2);
      continue;
    }
    buffers.offsets += encodeLittleEndian(buffers.cells.size(), 2);
    const int version = cell.value("version", kVersion);
    const bool older = version < kVersion;
    if (buffers.count > 0 && older != buffers.older)
      throw std::runtime_error("cells of both generations in a row");
    buffers.older = older;
    buffers.cells += older ? makeOlderCell(cell, version) : makeCell(cell);
    ++buffers.count;
  }
  return buffers;
}

}  // namespace dorvex::samples
