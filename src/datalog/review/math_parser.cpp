#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <set>

#include "datalog/channels.h"
#include "datalog/review/log_span.h"
#include "datalog/review/math_expression.h"

namespace vela::review {

namespace lexing {

enum class TokenKind { kNumber, kDuration, kName, kQuotedName, kSymbol, kEnd };

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::size_t position = 0;
  std::string text;    // a name, or a symbol such as "<="
  double value = 0.0;  // a number; a duration in seconds
};

bool IsNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool IsNamePart(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }
bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// Splits the text into tokens, or gives the first character that starts none.
class Lexer {
 public:
  explicit Lexer(std::string_view text) : text_(text) {}

  std::optional<ExpressionError> Run(std::vector<Token>& tokens) {
    while (true) {
      while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_]))) ++at_;
      if (at_ >= text_.size()) break;
      Token token;
      token.position = at_;
      if (auto error = Next(token)) return error;
      tokens.push_back(std::move(token));
    }
    tokens.push_back({TokenKind::kEnd, text_.size(), "", 0.0});
    return std::nullopt;
  }

 private:
  std::optional<ExpressionError> Next(Token& token) {
    const char c = text_[at_];
    if (IsDigit(c) || (c == '.' && at_ + 1 < text_.size() && IsDigit(text_[at_ + 1]))) {
      return Number(token);
    }
    if (IsNameStart(c)) {
      const std::size_t start = at_;
      while (at_ < text_.size() && IsNamePart(text_[at_])) ++at_;
      token.kind = TokenKind::kName;
      token.text = std::string(text_.substr(start, at_ - start));
      return std::nullopt;
    }
    if (c == '"') return Quoted(token);
    for (std::string_view symbol : {"<=", ">=", "==", "!="}) {
      if (text_.substr(at_, 2) == symbol) {
        token.kind = TokenKind::kSymbol;
        token.text = std::string(symbol);
        at_ += 2;
        return std::nullopt;
      }
    }
    if (std::string_view("+-*/()<>,[]@").find(c) != std::string_view::npos) {
      token.kind = TokenKind::kSymbol;
      token.text = std::string(1, c);
      ++at_;
      return std::nullopt;
    }
    if (c == '=' || c == '!') return ExpressionError{at_, "\"==\" and \"!=\" compare"};
    return ExpressionError{at_, std::string("unexpected character '") + c + "'"};
  }

  // A number, and with "s" or "ms" right after it a time.
  std::optional<ExpressionError> Number(Token& token) {
    const std::size_t start = at_;
    while (at_ < text_.size() && IsDigit(text_[at_])) ++at_;
    if (at_ < text_.size() && text_[at_] == '.') {
      ++at_;
      while (at_ < text_.size() && IsDigit(text_[at_])) ++at_;
    }
    token.kind = TokenKind::kNumber;
    token.value = std::strtod(std::string(text_.substr(start, at_ - start)).c_str(), nullptr);
    if (!std::isfinite(token.value)) return ExpressionError{start, "number too large"};
    const std::size_t unit = at_;
    while (at_ < text_.size() && IsNamePart(text_[at_])) ++at_;
    const std::string_view suffix = text_.substr(unit, at_ - unit);
    if (suffix.empty()) return std::nullopt;
    token.kind = TokenKind::kDuration;
    if (suffix == "s") return std::nullopt;
    if (suffix == "ms") {
      token.value /= 1000.0;
      return std::nullopt;
    }
    return ExpressionError{unit, "a time is written in s or ms"};
  }

  std::optional<ExpressionError> Quoted(Token& token) {
    const std::size_t end = text_.find('"', at_ + 1);
    if (end == std::string_view::npos)
      return ExpressionError{at_, "the name's quote is not closed"};
    token.kind = TokenKind::kQuotedName;
    token.text = std::string(text_.substr(at_ + 1, end - at_ - 1));
    if (token.text.empty()) return ExpressionError{at_, "empty name"};
    at_ = end + 1;
    return std::nullopt;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace lexing

using lexing::Lexer;
using lexing::Token;
using lexing::TokenKind;

// Recursive descent over the tokens, lowest precedence first: comparison, sum, product, unary,
// shifted term, primary.
class MathParser {
 public:
  MathParser(std::vector<Token> tokens, std::span<const NamedColumn> names)
      : tokens_(std::move(tokens)), names_(names) {}

  CompiledExpression Run() {
    MathExpression expression;
    nodes_ = &expression.nodes_;
    const int root = Comparison(0);
    if (!error_ && Peek().kind != TokenKind::kEnd) {
      Fail(Peek().position, Peek().text == ")" ? "\")\" without \"(\"" : "operator expected");
    }
    if (error_) return {std::nullopt, error_};
    expression.root_ = root;
    return {std::move(expression), std::nullopt};
  }

 private:
  const Token& Peek() const { return tokens_[at_]; }
  bool IsSymbol(std::string_view s) const {
    return Peek().kind == TokenKind::kSymbol && Peek().text == s;
  }
  int Fail(std::size_t position, std::string reason) {
    if (!error_) error_ = ExpressionError{position, std::move(reason)};
    return -1;
  }
  int Add(MathNode node) {
    nodes_->push_back(node);
    return static_cast<int>(nodes_->size()) - 1;
  }
  int Binary(MathOp op, int a, int b) {
    MathNode node;
    node.op = op;
    node.a = a;
    node.b = b;
    return Add(node);
  }
  bool Expect(std::string_view symbol) {
    if (IsSymbol(symbol)) {
      ++at_;
      return true;
    }
    Fail(Peek().position, "\"" + std::string(symbol) + "\" expected");
    return false;
  }

  int Comparison(int depth);
  int Sum(int depth);
  int Product(int depth);
  int Unary(int depth);
  int Shifted(int depth);
  int Primary(int depth);
  int Name(const Token& token);
  int Function(const Token& token, int depth);
  int Average(int operand);
  int RecordCount(std::string_view what);

  std::vector<Token> tokens_;
  std::span<const NamedColumn> names_;
  std::size_t at_ = 0;
  std::vector<MathNode>* nodes_ = nullptr;
  std::optional<ExpressionError> error_;
};

int MathParser::Comparison(int depth) {
  static const std::pair<std::string_view, MathOp> kOps[] = {
      {"<", MathOp::kLess},          {"<=", MathOp::kLessEqual}, {">", MathOp::kGreater},
      {">=", MathOp::kGreaterEqual}, {"==", MathOp::kEqual},     {"!=", MathOp::kNotEqual}};
  int left = Sum(depth);
  while (!error_) {
    const auto op = std::find_if(std::begin(kOps), std::end(kOps),
                                 [&](const auto& entry) { return IsSymbol(entry.first); });
    if (op == std::end(kOps)) break;
    ++at_;
    left = Binary(op->second, left, Sum(depth));
  }
  return left;
}

int MathParser::Sum(int depth) {
  int left = Product(depth);
  while (!error_ && (IsSymbol("+") || IsSymbol("-"))) {
    const MathOp op = IsSymbol("+") ? MathOp::kAdd : MathOp::kSubtract;
    ++at_;
    left = Binary(op, left, Product(depth));
  }
  return left;
}

int MathParser::Product(int depth) {
  int left = Unary(depth);
  while (!error_ && (IsSymbol("*") || IsSymbol("/"))) {
    const MathOp op = IsSymbol("*") ? MathOp::kMultiply : MathOp::kDivide;
    ++at_;
    left = Binary(op, left, Unary(depth));
  }
  return left;
}

int MathParser::Unary(int depth) {
  if (depth > kMaxExpressionDepth) return Fail(Peek().position, "nested too deeply");
  if (IsSymbol("-")) {
    ++at_;
    return Binary(MathOp::kNegate, Unary(depth + 1), -1);
  }
  if (IsSymbol("+")) {
    ++at_;
    return Unary(depth + 1);
  }
  return Shifted(depth);
}

// A term with a shift: [n] by records, @t by time (t with its unit, signed).
int MathParser::Shifted(int depth) {
  const int term = Primary(depth);
  if (error_) return term;
  if (IsSymbol("[")) {
    ++at_;
    MathNode node;
    node.op = MathOp::kShiftRecords;
    node.a = term;
    const bool negative = IsSymbol("-");
    if (negative || IsSymbol("+")) ++at_;
    node.records = RecordCount("a whole number of records");
    if (negative) node.records = -node.records;
    if (error_ || !Expect("]")) return -1;
    return Add(node);
  }
  if (IsSymbol("@")) {
    ++at_;
    const bool negative = IsSymbol("-");
    if (negative || IsSymbol("+")) ++at_;
    if (Peek().kind != TokenKind::kDuration) return Fail(Peek().position, "a time such as 0.5s");
    MathNode node;
    node.op = MathOp::kShiftSeconds;
    node.a = term;
    node.value = negative ? -Peek().value : Peek().value;
    ++at_;
    return Add(node);
  }
  return term;
}

int MathParser::RecordCount(std::string_view what) {
  const Token& token = Peek();
  if (token.kind != TokenKind::kNumber || token.value != std::floor(token.value) ||
      token.value > 1e9) {
    return Fail(token.position, std::string(what) + " expected");
  }
  ++at_;
  return static_cast<int>(token.value);
}

int MathParser::Primary(int depth) {
  const Token token = Peek();
  switch (token.kind) {
    case TokenKind::kNumber: {
      ++at_;
      MathNode node;
      node.value = token.value;
      return Add(node);
    }
    case TokenKind::kDuration:
      return Fail(token.position, "a time belongs after @ or in avg()");
    case TokenKind::kQuotedName:
      ++at_;
      return Name(token);
    case TokenKind::kName:
      ++at_;
      if (IsSymbol("(")) return Function(token, depth);
      return Name(token);
    case TokenKind::kEnd:
      return Fail(token.position, "the expression ends too early");
    case TokenKind::kSymbol:
      break;
  }
  if (token.text != "(") return Fail(token.position, "a value expected");
  ++at_;
  const int inner = Comparison(depth + 1);
  if (error_ || !Expect(")")) return -1;
  return inner;
}

int MathParser::Name(const Token& token) {
  for (const NamedColumn& named : names_) {
    if (SameName(named.name, token.text)) {
      MathNode node;
      node.op = MathOp::kColumn;
      node.column = named.column;
      return Add(node);
    }
  }
  return Fail(token.position, "no channel named \"" + token.text + "\"");
}

int MathParser::Function(const Token& token, int depth) {
  static const std::pair<std::string_view, std::pair<MathOp, int>> kFunctions[] = {
      {"min", {MathOp::kMin, 2}},
      {"max", {MathOp::kMax, 2}},
      {"abs", {MathOp::kAbs, 1}},
      {"d", {MathOp::kDerivative, 1}},
      {"avg", {MathOp::kAverageSeconds, 2}},
      {"target", {MathOp::kTarget, 2}}};
  const auto found = std::find_if(std::begin(kFunctions), std::end(kFunctions),
                                  [&](const auto& entry) { return entry.first == token.text; });
  if (found == std::end(kFunctions)) {
    return Fail(token.position, "no function named \"" + token.text + "\"");
  }
  ++at_;  // the "("
  const int first = Comparison(depth + 1);
  if (error_) return -1;
  int node = -1;
  if (found->second.first == MathOp::kAverageSeconds) {
    if (!Expect(",")) return -1;
    node = Average(first);
  } else if (found->second.second == 2) {
    if (!Expect(",")) return -1;
    const int second = Comparison(depth + 1);
    node = Binary(found->second.first, first, second);
  } else {
    node = Binary(found->second.first, first, -1);
  }
  if (error_ || !Expect(")")) return -1;
  return node;
}

// avg's window: a time (0.5s) or a number of records (8).
int MathParser::Average(int operand) {
  MathNode node;
  node.a = operand;
  const Token& window = Peek();
  if (window.kind == TokenKind::kDuration) {
    if (!(window.value > 0.0)) return Fail(window.position, "the window must be longer than 0");
    node.op = MathOp::kAverageSeconds;
    node.value = window.value;
    ++at_;
  } else {
    node.op = MathOp::kAverageRecords;
    node.records = RecordCount("a window such as 0.5s or 8 (records)");
    if (!error_ && node.records < 1) return Fail(window.position, "the window must hold a record");
  }
  return error_ ? -1 : Add(node);
}

std::vector<int> MathExpression::Columns() const {
  std::set<int> columns;
  for (const MathNode& node : nodes_) {
    if (node.op == MathOp::kColumn) columns.insert(node.column);
  }
  return {columns.begin(), columns.end()};
}

std::vector<NamedColumn> RecordedChannelNames() {
  std::vector<NamedColumn> names;
  for (int n = 0; n < kChannelCount; ++n) {
    names.push_back({std::string(kChannels[n].name), n});
    if (kChannels[n].caption != kChannels[n].name) {
      names.push_back({std::string(kChannels[n].caption), n});
    }
  }
  return names;
}

CompiledExpression CompileExpression(std::string_view text, std::span<const NamedColumn> names) {
  if (text.size() > kMaxExpressionLength) {
    return {std::nullopt, ExpressionError{kMaxExpressionLength, "the expression is too long"}};
  }
  std::vector<Token> tokens;
  if (auto error = Lexer(text).Run(tokens)) return {std::nullopt, std::move(error)};
  return MathParser(std::move(tokens), names).Run();
}

}  // namespace vela::review
