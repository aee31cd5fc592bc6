// Aperture macros: a macro is a list of statements (primitives, variable definitions,
// comments) whose modifiers are arithmetic expressions over the variables $1, $2, ...; an
// aperture instantiates it with values for the first variables.
#ifndef QVIS_ARTWORK_MACRO_H_
#define QVIS_ARTWORK_MACRO_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qvis {

// MacroExpr is an arithmetic expression kept in postfix order, so it copies and compares as a
// plain vector.
// FormatDecimal writes v with `significant` digits as Gerber reads a number: never in exponent
// form (very large and very small values are written in full, the fraction's trailing zeros
// dropped). NaN and infinities are the caller's to avoid.
std::string FormatDecimal(double v, int significant);

struct MacroExpr {
  enum class Op : std::uint8_t { kConst, kVar, kAdd, kSub, kMul, kDiv, kNeg };
  struct Token {
    Op op = Op::kConst;
    double value = 0.0;  // kConst
    int var = 0;         // kVar: the n of $n
    friend bool operator==(const Token&, const Token&) = default;
  };
  std::vector<Token> tokens;

  static MacroExpr Constant(double v);
  // Evaluate with `vars[n]` the value of $n (undefined variables are 0). A malformed expression
  // (never produced by Parse) evaluates to 0.
  double Evaluate(const std::vector<double>& vars) const;
  // ToString writes the expression in the file syntax (x for multiplication).
  std::string ToString() const;
  friend bool operator==(const MacroExpr&, const MacroExpr&) = default;
};

// Limits that keep hostile macros small.
inline constexpr int kMaxMacroVariable = 9999;
inline constexpr int kMaxExprDepth = 64;
inline constexpr int kMaxExprTokens = 4096;

// ParseMacroExpr reads `text` as a whole expression. On failure returns false and sets `error`
// to what was expected and `error_pos` to the offset in `text`.
bool ParseMacroExpr(std::string_view text, MacroExpr* out, std::string* error,
                    std::size_t* error_pos);

// Primitive codes of the macro language.
enum MacroPrimitiveCode : int {
  kMacroComment = 0,
  kMacroCircle = 1,
  kMacroOutline = 4,
  kMacroPolygon = 5,
  kMacroMoire = 6,
  kMacroThermal = 7,
  kMacroVectorLine = 20,
  kMacroCenterLine = 21,
};

struct MacroStatement {
  enum class Kind : std::uint8_t { kPrimitive, kAssign, kComment };
  Kind kind = Kind::kPrimitive;
  int code = 0;                      // kPrimitive
  std::vector<MacroExpr> modifiers;  // kPrimitive
  int var = 0;                       // kAssign: $var = value
  MacroExpr value;                   // kAssign
  std::string comment;               // kComment
  friend bool operator==(const MacroStatement&, const MacroStatement&) = default;
};

struct ApertureMacro {
  std::string name;
  std::vector<MacroStatement> statements;
  friend bool operator==(const ApertureMacro&, const ApertureMacro&) = default;
};

// A macro primitive with every modifier evaluated.
struct EvaluatedPrimitive {
  int code = 0;
  std::vector<double> values;
};

// EvaluateMacro runs the statements with $1.. set to `params` and returns the primitives in
// order.
std::vector<EvaluatedPrimitive> EvaluateMacro(const ApertureMacro& macro,
                                              const std::vector<double>& params);

}  // namespace qvis

#endif  // QVIS_ARTWORK_MACRO_H_
