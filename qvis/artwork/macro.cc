#include "qvis/artwork/macro.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace qvis {

MacroExpr MacroExpr::Constant(double v) {
  MacroExpr e;
  e.tokens.push_back(Token{Op::kConst, v, 0});
  return e;
}

double MacroExpr::Evaluate(const std::vector<double>& vars) const {
  std::vector<double> stack;
  stack.reserve(tokens.size());
  for (const Token& t : tokens) {
    switch (t.op) {
      case Op::kConst:
        stack.push_back(t.value);
        break;
      case Op::kVar:
        stack.push_back(t.var >= 0 && static_cast<std::size_t>(t.var) < vars.size()
                            ? vars[static_cast<std::size_t>(t.var)]
                            : 0.0);
        break;
      case Op::kNeg:
        if (stack.empty()) return 0.0;
        stack.back() = -stack.back();
        break;
      default: {
        if (stack.size() < 2) return 0.0;
        const double b = stack.back();
        stack.pop_back();
        double& a = stack.back();
        if (t.op == Op::kAdd) a += b;
        if (t.op == Op::kSub) a -= b;
        if (t.op == Op::kMul) a *= b;
        if (t.op == Op::kDiv) a = b == 0.0 ? 0.0 : a / b;
        break;
      }
    }
  }
  if (stack.size() != 1 || !std::isfinite(stack.back())) return 0.0;
  return stack.back();
}

std::string FormatDecimal(double v, int significant) {
  char buf[400];
  std::snprintf(buf, sizeof buf, "%.*g", significant, v);
  if (std::strpbrk(buf, "eE") == nullptr) return buf;
  std::snprintf(buf, sizeof buf, "%.15f", v);
  std::string s = buf;
  if (s.find('.') != std::string::npos) {
    s.erase(s.find_last_not_of('0') + 1);
    if (s.back() == '.') s.pop_back();
  }
  if (s == "-0") s = "0";
  return s;
}

namespace {

std::string FormatNumber(double v) { return FormatDecimal(v, 10); }

int Precedence(MacroExpr::Op op) {
  switch (op) {
    case MacroExpr::Op::kAdd:
    case MacroExpr::Op::kSub:
      return 1;
    case MacroExpr::Op::kMul:
    case MacroExpr::Op::kDiv:
      return 2;
    case MacroExpr::Op::kNeg:
      return 3;
    default:
      return 4;
  }
}

// Recursive-descent parser over the file syntax: + - x X / ( ) unary +/-, numbers, $n.
class ExprParser {
 public:
  ExprParser(std::string_view s, MacroExpr* out) : s_(s), out_(out) {}
  bool Parse(std::string* error, std::size_t* pos) {
    bool ok = Sum(0) && Done();
    if (ok && static_cast<int>(out_->tokens.size()) > kMaxExprTokens) {
      ok = false;
      error_ = "a shorter expression";
    }
    if (!ok) {
      *error = error_;
      *pos = pos_;
    }
    return ok;
  }

 private:
  void Skip() {
    while (pos_ < s_.size() && (s_[pos_] == ' ' || s_[pos_] == '\t' || s_[pos_] == '\r' ||
                                s_[pos_] == '\n')) {
      ++pos_;
    }
  }
  bool Done() {
    Skip();
    if (pos_ != s_.size()) {
      error_ = "an operator or the end of the expression";
      return false;
    }
    return true;
  }
  bool Fail(const char* what) {
    error_ = what;
    return false;
  }
  bool Sum(int depth) {
    if (!Product(depth)) return false;
    for (;;) {
      Skip();
      if (pos_ >= s_.size() || (s_[pos_] != '+' && s_[pos_] != '-')) return true;
      const char c = s_[pos_++];
      if (!Product(depth)) return false;
      out_->tokens.push_back({c == '+' ? MacroExpr::Op::kAdd : MacroExpr::Op::kSub, 0, 0});
    }
  }
  bool Product(int depth) {
    if (!Unary(depth)) return false;
    for (;;) {
      Skip();
      if (pos_ >= s_.size() || (s_[pos_] != 'x' && s_[pos_] != 'X' && s_[pos_] != '/')) return true;
      const char c = s_[pos_++];
      if (!Unary(depth)) return false;
      out_->tokens.push_back({c == '/' ? MacroExpr::Op::kDiv : MacroExpr::Op::kMul, 0, 0});
    }
  }
  bool Unary(int depth) {
    if (depth > kMaxExprDepth) return Fail("a less deeply nested expression");
    Skip();
    if (pos_ < s_.size() && (s_[pos_] == '-' || s_[pos_] == '+')) {
      const char c = s_[pos_++];
      if (!Unary(depth + 1)) return false;
      if (c == '-') out_->tokens.push_back({MacroExpr::Op::kNeg, 0, 0});
      return true;
    }
    return Primary(depth);
  }
  bool Primary(int depth) {
    Skip();
    if (pos_ >= s_.size()) return Fail("a number, a variable or '('");
    const char c = s_[pos_];
    if (c == '(') {
      ++pos_;
      if (!Sum(depth + 1)) return false;
      Skip();
      if (pos_ >= s_.size() || s_[pos_] != ')') return Fail("')'");
      ++pos_;
      return true;
    }
    if (c == '$') {
      ++pos_;
      const std::size_t b = pos_;
      int v = 0;
      while (pos_ < s_.size() && std::isdigit(static_cast<unsigned char>(s_[pos_]))) {
        v = v * 10 + (s_[pos_] - '0');
        if (v > kMaxMacroVariable) return Fail("a variable number up to 9999");
        ++pos_;
      }
      if (pos_ == b) return Fail("a variable number after '$'");
      out_->tokens.push_back({MacroExpr::Op::kVar, 0, v});
      return true;
    }
    const std::size_t b = pos_;
    while (pos_ < s_.size() &&
           (std::isdigit(static_cast<unsigned char>(s_[pos_])) || s_[pos_] == '.')) {
      ++pos_;
    }
    if (pos_ == b) return Fail("a number, a variable or '('");
    double v = 0;
    const auto r = std::from_chars(s_.data() + b, s_.data() + pos_, v);
    if (r.ec != std::errc() || r.ptr != s_.data() + pos_) {
      pos_ = b;
      return Fail("a decimal number");
    }
    out_->tokens.push_back({MacroExpr::Op::kConst, v, 0});
    return true;
  }

  std::string_view s_;
  MacroExpr* out_;
  std::size_t pos_ = 0;
  std::string error_;
};

}  // namespace

bool ParseMacroExpr(std::string_view text, MacroExpr* out, std::string* error,
                    std::size_t* error_pos) {
  out->tokens.clear();
  ExprParser p(text, out);
  return p.Parse(error, error_pos);
}

std::string MacroExpr::ToString() const {
  struct Part {
    std::string text;
    int prec;
  };
  std::vector<Part> stack;
  for (const Token& t : tokens) {
    if (t.op == Op::kConst) {
      // Negative constants come from the writer's unit scaling only; keep them parenthesised.
      std::string s = FormatNumber(t.value);
      stack.push_back({t.value < 0 ? "(" + s + ")" : s, 4});
    } else if (t.op == Op::kVar) {
      stack.push_back({"$" + std::to_string(t.var), 4});
    } else if (t.op == Op::kNeg) {
      if (stack.empty()) return "0";
      Part& a = stack.back();
      a.text = "-" + (a.prec < 3 ? "(" + a.text + ")" : a.text);
      a.prec = 3;
    } else {
      if (stack.size() < 2) return "0";
      Part b = stack.back();
      stack.pop_back();
      Part& a = stack.back();
      const int p = Precedence(t.op);
      const char* op = t.op == Op::kAdd ? "+" : t.op == Op::kSub ? "-" : t.op == Op::kMul ? "x" : "/";
      std::string lhs = a.prec < p ? "(" + a.text + ")" : a.text;
      // The right operand of - and / needs brackets at equal precedence too.
      std::string rhs = (b.prec < p || (b.prec == p && (t.op == Op::kSub || t.op == Op::kDiv)))
                            ? "(" + b.text + ")"
                            : b.text;
      a.text = lhs + op + rhs;
      a.prec = p;
    }
  }
  return stack.size() == 1 ? stack.back().text : "0";
}

std::vector<EvaluatedPrimitive> EvaluateMacro(const ApertureMacro& macro,
                                              const std::vector<double>& params) {
  std::vector<double> vars(params.size() + 1, 0.0);
  for (std::size_t i = 0; i < params.size(); ++i) vars[i + 1] = params[i];
  std::vector<EvaluatedPrimitive> out;
  for (const MacroStatement& st : macro.statements) {
    if (st.kind == MacroStatement::Kind::kAssign) {
      if (st.var < 0 || st.var > kMaxMacroVariable) continue;
      const double v = st.value.Evaluate(vars);
      if (static_cast<std::size_t>(st.var) >= vars.size()) {
        vars.resize(static_cast<std::size_t>(st.var) + 1, 0.0);
      }
      vars[static_cast<std::size_t>(st.var)] = v;
    } else if (st.kind == MacroStatement::Kind::kPrimitive) {
      EvaluatedPrimitive p;
      p.code = st.code;
      p.values.reserve(st.modifiers.size());
      for (const MacroExpr& m : st.modifiers) p.values.push_back(m.Evaluate(vars));
      out.push_back(std::move(p));
    }
  }
  return out;
}

}  // namespace qvis
