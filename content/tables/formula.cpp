#include "tables/formula.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "graph/find_each.h"
#include "graph/plain_text.h"
#include "newer.h"
#include "tables/date_format.h"
#include "tables/decimal.h"
#include "tables/duration_format.h"
#include "tables/functions.h"
#include "tables/symbols.h"

namespace dorvex::content {
namespace {

using Nodes = TSCE::ASTNodeArrayArchive;
using Node = TSCE::ASTNodeArrayArchive_ASTNodeArchive;
using Type = TSCE::ASTNodeArrayArchive_ASTNodeType;

// What a person can write is far shorter.
constexpr std::size_t kLongestText = 1 << 16;
constexpr std::size_t kMostNodes = 20'000;
constexpr unsigned kDeepestNesting = 32;

// How tightly an expression holds together; what is looser needs brackets within.
enum class Strength : std::uint8_t {
  kComparison,
  kConcatenation,
  kAddition,
  kMultiplication,
  kPower,
  kSign,
  kPercent,
  kRange,
  kWhole,
};

struct Expression {
  std::string text;
  Strength strength = Strength::kWhole;
  std::size_t qualifier = 0;  // how much of the text is the name of another table
};

struct Operator {
  std::string_view sign;
  Type type;
  Strength strength;
};

constexpr Operator kOperators[] = {
    {"+", Type::ADDITION_NODE, Strength::kAddition},
    {"-", Type::SUBTRACTION_NODE, Strength::kAddition},
    {"×", Type::MULTIPLICATION_NODE, Strength::kMultiplication},
    {"÷", Type::DIVISION_NODE, Strength::kMultiplication},
    {"^", Type::POWER_NODE, Strength::kPower},
    {"&", Type::CONCATENATION_NODE, Strength::kConcatenation},
    {">", Type::GREATER_THAN_NODE, Strength::kComparison},
    {"≥", Type::GREATER_THAN_OR_EQUAL_TO_NODE, Strength::kComparison},
    {"<", Type::LESS_THAN_NODE, Strength::kComparison},
    {"≤", Type::LESS_THAN_OR_EQUAL_TO_NODE, Strength::kComparison},
    {"=", Type::EQUAL_TO_NODE, Strength::kComparison},
    {"≠", Type::NOT_EQUAL_TO_NODE, Strength::kComparison},
    {":", Type::COLON_NODE, Strength::kRange},
    {":", Type::COLON_NODE_WITH_UIDS, Strength::kRange},
};

// The seconds of a unit, which is a bit: weeks, days, hours, minutes, seconds,
// milliseconds. 0 for none.
double secondsOfUnit(std::int64_t unit) {
  switch (unit) {
    case 1:
      return 604'800;
    case 2:
      return 86'400;
    case 4:
      return 3'600;
    case 8:
      return 60;
    case 16:
      return 1;
    case 32:
      return 0.001;
    default:
      return 0;
  }
}

// A duration has the units that a person typed, if they hold all of it.
DurationFormat unitsOfDuration(const Message<Node>& node, double seconds, const Symbols& symbols) {
  const auto largest = node.get(Node::AST_duration_node_duration_unit_largest);
  const auto smallest = node.get(Node::AST_duration_node_duration_unit_smallest);
  const double unit = secondsOfUnit(smallest);
  const bool fits = unit > 0 && std::fmod(seconds, unit) == 0;
  const bool automatic = !fits || node.get(Node::AST_duration_node_use_automatic_units);
  return {DurationStyle::kShort, largest, smallest, automatic, symbols};
}

class Decoder {
 public:
  explicit Decoder(const References& references) : references_(references) {
    constexpr std::size_t kUsualDepth = 8;
    stack_.reserve(kUsualDepth);
  }

  // Decodes the nodes, whose operands come before what is done with them.
  bool run(const Message<Nodes>& nodes, unsigned depth);
  FormulaText finish();

 private:
  bool step(const Message<Node>& node, unsigned depth);
  bool fail(std::string problem) {
    problem_ = std::move(problem);
    return false;
  }
  bool push(std::string text, Strength strength = Strength::kWhole);
  bool pushReference(std::optional<ReferenceText> reference);
  std::optional<Expression> pop();
  // The last count operands, joined.
  std::optional<std::string> popJoined(std::uint64_t count, std::string_view separator);
  static std::string within(const Expression& operand, Strength least);

  bool binary(const Operator& op);
  bool range(const Operator& op);
  bool prefix(std::string_view sign);
  bool percent();
  bool function(std::string name, std::uint64_t arguments);
  bool array(const Message<Node>& node);
  bool number(const Message<Node>& node);
  bool date(const Message<Node>& node);
  bool duration(const Message<Node>& node);
  bool whitespace(const Message<Node>& node, bool before);
  bool let(const Message<Node>& node, unsigned depth);

  const References& references_;
  std::vector<Expression> stack_;
  std::size_t nodes_ = 0;
  std::string problem_;
};

bool Decoder::run(const Message<Nodes>& nodes, unsigned depth) {
  if (depth > kDeepestNesting) return fail("it is nested too deep");
  for (const auto& node : nodes.all(Nodes::AST_node)) {
    if (++nodes_ > kMostNodes) return fail("it is too long");
    if (!step(node, depth)) return false;
  }
  return true;
}

FormulaText Decoder::finish() {
  if (!problem_.empty()) return {"", problem_};
  if (stack_.empty()) return {"", "it is empty"};
  if (stack_.size() > 1) return {"", "its parts do not fit together"};
  return {std::move(stack_.back().text), ""};
}

bool Decoder::push(std::string text, Strength strength) {
  if (text.size() > kLongestText) return fail("it is too long");
  stack_.push_back({std::move(text), strength});
  return true;
}

bool Decoder::pushReference(std::optional<ReferenceText> reference) {
  if (!reference) return fail("it refers to what is not there");
  if (!push(reference->table + reference->place)) return false;
  stack_.back().qualifier = reference->table.size();
  return true;
}

std::optional<Expression> Decoder::pop() {
  if (stack_.empty()) {
    fail("an operand is missing");
    return std::nullopt;
  }
  Expression last = std::move(stack_.back());
  stack_.pop_back();
  return last;
}

std::optional<std::string> Decoder::popJoined(std::uint64_t count, std::string_view separator) {
  if (count > stack_.size()) {
    fail("an operand is missing");
    return std::nullopt;
  }
  if (count == 0) return "";
  const auto first = stack_.end() - static_cast<std::ptrdiff_t>(count);
  std::string text = std::move(first->text);
  for (auto operand = first + 1; operand != stack_.end(); ++operand) {
    text += separator;
    text += operand->text;
    if (text.size() > kLongestText) break;
  }
  stack_.erase(first, stack_.end());
  return text;
}

std::string Decoder::within(const Expression& operand, Strength least) {
  return operand.strength < least ? '(' + operand.text + ')' : operand.text;
}

// A range of another table names it once.
bool Decoder::range(const Operator& op) {
  if (stack_.size() >= 2) {
    Expression& last = stack_.back();
    const Expression& first = stack_[stack_.size() - 2];
    if (last.qualifier > 0 && last.qualifier == first.qualifier &&
        first.text.starts_with(last.text.substr(0, last.qualifier)))
      last.text.erase(0, last.qualifier);
  }
  return binary(op);
}

// Operators of the same strength are read from the left.
bool Decoder::binary(const Operator& op) {
  const auto right = pop();
  const auto left = right ? pop() : std::nullopt;
  if (!left) return false;
  const auto tighter = static_cast<Strength>(static_cast<int>(op.strength) + 1);
  return push(within(*left, op.strength).append(op.sign).append(within(*right, tighter)),
              op.strength);
}

bool Decoder::prefix(std::string_view sign) {
  const auto operand = pop();
  if (!operand) return false;
  return push(std::string(sign).append(within(*operand, Strength::kSign)), Strength::kSign);
}

// Of a sign and a percentage it is all the same which comes first.
bool Decoder::percent() {
  const auto operand = pop();
  return operand && push(within(*operand, Strength::kSign) + '%',
                         std::min(operand->strength, Strength::kPercent));
}

bool Decoder::function(std::string name, std::uint64_t arguments) {
  const auto joined = popJoined(arguments, ",");
  if (!joined) return false;
  name.reserve(name.size() + joined->size() + 2);
  name += '(';
  name += *joined;
  name += ')';
  return push(std::move(name));
}

// Rows are parted by semicolons.
bool Decoder::array(const Message<Node>& node) {
  const std::uint64_t columns = node.get(Node::AST_array_node_numCol);
  const std::uint64_t rows = node.get(Node::AST_array_node_numRow);
  if (columns == 0 || rows == 0 || columns > stack_.size() || rows > stack_.size() / columns)
    return fail("an array is damaged");
  const auto first = stack_.end() - static_cast<std::ptrdiff_t>(columns * rows);
  std::string text = "{";
  for (std::uint64_t i = 0; i < columns * rows; ++i) {
    if (i > 0) text += i % columns == 0 ? ';' : ',';
    text += first[static_cast<std::ptrdiff_t>(i)].text;
  }
  stack_.erase(first, stack_.end());
  return push(text + '}');
}

bool Decoder::number(const Message<Node>& node) {
  using Newer = newer::TSCE_ASTNodeArchive;
  const auto [low, high] = findEach(node.as<Newer>(), Newer::decimal_low, Newer::decimal_high);
  std::optional<Decimal> decimal;
  if (low && high) {
    std::string bits;
    for (const std::uint64_t word : {*low, *high})
      for (unsigned i = 0; i < 8; ++i) bits += static_cast<char>(word >> (8 * i));
    decimal = Decimal::fromBits(bits);
  } else if (const auto value = node.find(Node::AST_number_node_number)) {
    if (std::isfinite(*value)) decimal = Decimal(*value);
  }
  if (!decimal) return fail("a number is missing");
  return push(decimal->text(), decimal->isNegative() ? Strength::kSign : Strength::kWhole);
}

// A date is written as what makes it: the application shows it in the locale's way.
bool Decoder::date(const Message<Node>& node) {
  const auto seconds = node.find(Node::AST_date_node_dateNum);
  CivilTime time;
  if (!seconds || !civilTime(*seconds, time)) return fail("a date is missing");
  const auto joined = [](std::string_view function, std::int64_t a, std::int64_t b,
                         std::int64_t c) {
    return std::string(function) + std::to_string(a) + ',' + std::to_string(b) + ',' +
           std::to_string(c) + ')';
  };
  std::string text = joined("DATE(", time.year, time.month, time.day);
  if (time.hour == 0 && time.minute == 0 && time.second == 0) return push(std::move(text));
  text += '+' + joined("DURATION(,,", time.hour, time.minute, time.second);
  return push(std::move(text), Strength::kAddition);
}

bool Decoder::duration(const Message<Node>& node) {
  const double unit = secondsOfUnit(node.get(Node::AST_duration_node_unit));
  const auto count = node.find(Node::AST_duration_node_unitNum);
  if (!count || unit == 0 || !std::isfinite(*count * unit)) return fail("a duration is missing");
  static const Symbols english("en_US");
  std::string text;
  unitsOfDuration(node, *count * unit, english).append(*count * unit, english, text);
  if (text.empty()) return fail("a duration is too long");
  return push(std::move(text));
}

// Spaces that a person typed stand before or behind the operand that came last.
bool Decoder::whitespace(const Message<Node>& node, bool before) {
  if (stack_.empty()) return true;
  const std::string spaces = plainText(node.get(Node::AST_whitespace));
  if (spaces.find_first_not_of(" \n\t\u00A0") != std::string::npos) return true;
  std::string& text = stack_.back().text;
  text = before ? spaces + text : text + spaces;
  if (before) stack_.back().qualifier = 0;
  return text.size() <= kLongestText || fail("it is too long");
}

bool Decoder::let(const Message<Node>& node, unsigned depth) {
  auto value = pop();
  if (!value) return false;
  const auto body = node.find(Node::AST_let_e2);
  if (!body) return fail("a name has no use");
  if (!run(*body, depth + 1)) return false;
  const auto result = pop();
  return result && push("LET(" + plainText(node.get(Node::AST_let_identifier)) + ',' + value->text +
                        ',' + result->text + ')');
}

bool Decoder::step(const Message<Node>& node, unsigned depth) {
  const auto [stored, index, arguments] = findEach(
      node, Node::AST_node_type, Node::AST_function_node_index, Node::AST_function_node_numArgs);
  const auto type = stored.value_or(Type{});
  const auto* op = std::ranges::find(kOperators, type, &Operator::type);
  if (op != std::end(kOperators))
    return op->strength == Strength::kRange ? range(*op) : binary(*op);
  switch (type) {
    case Type::NEGATION_NODE:
      return prefix("-");
    case Type::PLUS_SIGN_NODE:
      return prefix("+");
    case Type::PERCENT_NODE:
      return percent();
    case Type::FUNCTION_NODE: {
      const std::string_view name = functionName(index.value_or(0));
      if (name.empty())
        return fail("function " + std::to_string(index.value_or(0)) + " is not known");
      return function(std::string(name), arguments.value_or(0));
    }
    case Type::UNKNOWN_FUNCTION_NODE:
      return function(plainText(node.get(Node::AST_unknown_function_node_string)),
                      node.get(Node::AST_unknown_function_node_numArgs));
    case Type::NUMBER_NODE:
      return number(node);
    case Type::BOOLEAN_NODE:
      return push(node.get(Node::AST_boolean_node_boolean) ? "TRUE" : "FALSE");
    case Type::TOKEN_NODE:
      return push(node.get(Node::AST_token_node_boolean) ? "TRUE" : "FALSE");
    case Type::STRING_NODE: {
      std::string text = "\"";
      for (const char c : plainText(node.get(Node::AST_string_node_string)))
        text.append(c == '"' ? 2 : 1, c);
      return push(text + '"');
    }
    case Type::DATE_NODE:
      return date(node);
    case Type::DURATION_NODE:
      return duration(node);
    case Type::EMPTY_ARGUMENT_NODE:
      return push("");
    case Type::ARRAY_NODE:
      return array(node);
    case Type::LIST_NODE: {
      const auto joined = popJoined(node.get(Node::AST_list_node_numArgs), ",");
      return joined && push('(' + *joined + ')');
    }
    case Type::THUNK_NODE:
    case Type::BEGIN_EMBEDDED_NODE_ARRAY: {
      // What is evaluated later stands within the node or up to its end.
      const auto nested = node.find(Node::AST_thunk_node_array);
      return !nested || run(*nested, depth + 1);
    }
    case Type::END_THUNK_NODE:
    case Type::LET_END_NODE:
      return true;
    case Type::REFERENCE_ERROR_NODE:
    case Type::REFERENCE_ERROR_WITH_UIDS:
      return push("#REF!");
    case Type::APPEND_WHITESPACE_NODE:
      return whitespace(node, false);
    case Type::PREPEND_WHITESPACE_NODE:
      return whitespace(node, true);
    case Type::CELL_REFERENCE_NODE:
    case Type::LINKED_CELL_REF_NODE:
    case Type::LINKED_COLUMN_REF_NODE:
    case Type::LINKED_ROW_REF_NODE:
      return pushReference(references_.cell(node));
    case Type::UID_REFERENCE_NODE:
      return pushReference(references_.cellByUid(node));
    case Type::COLON_TRACT_NODE:
      return pushReference(references_.tract(node));
    case Type::LET_NODE:
      return let(node, depth);
    case Type::LET_VAR_NODE: {
      const auto name = node.find(Node::AST_let_identifier);
      return name ? push(plainText(*name)) : fail("a name is missing");
    }
    case Type::CATEGORY_REF_NODE:
      return fail("it refers to a category");
    case Type::LOCAL_CELL_REFERENCE_NODE:
    case Type::CROSS_TABLE_CELL_REFERENCE_NODE:
      return fail("it refers to a cell by a handle");
    default:
      return fail("it has a part of an unknown kind, " + std::to_string(static_cast<int>(type)));
  }
}

}  // namespace

FormulaText formulaText(Reading& reading, const Message<TSCE::FormulaArchive>& formula,
                        const Host& host) {
  const References references(reading.keep<TableDirectory>(), host);
  Decoder decoder(references);
  decoder.run(formula.get(TSCE::FormulaArchive::AST_node_array), 0);
  return decoder.finish();
}

}  // namespace dorvex::content
