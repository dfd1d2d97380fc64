// Texts that people read: numbers, arrays, descriptions of types.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "host/internal.hpp"

namespace orv {

namespace detail {

// The fewest digits that read back as the same number, beginning with as many as people like to see.
std::string format_real(double x) {
  if (std::isnan(x)) return "NaN";
  if (std::isinf(x)) return x < 0 ? "-Inf" : "Inf";
  char text[40];
  for (int digits = 15; digits <= 17; ++digits) {
    std::snprintf(text, sizeof text, "%.*g", digits, x);
    if (std::strtod(text, nullptr) == x) break;
  }
  return text;
}

std::string format_real(float x) {
  if (!std::isfinite(x)) return format_real(static_cast<double>(x));
  char text[40];
  for (int digits = 6; digits <= 9; ++digits) {
    std::snprintf(text, sizeof text, "%.*g", digits, static_cast<double>(x));
    if (std::strtof(text, nullptr) == x) break;
  }
  return text;
}

std::string shape_text(const Dims& dims) {
  if (dims.empty()) return "scalar";
  std::string text = "[";
  for (size_t d = 0; d < dims.size(); ++d) text += (d ? "," : "") + std::to_string(dims[d]);
  return text + "]";
}

}  // namespace detail

namespace {

constexpr long longest_shown = 1000;  // elements; a longer array shows the ends of each extent
constexpr long shown_at_ends = 3;
constexpr size_t line_width = 100;

std::string structure_text(const Value& v, const std::string& indent);

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + "\"";
}

std::string element_text(const Value& v, long k, const std::string& indent) {
  if (v.is_text()) return quoted(detail::text_of(v.as<ORV_STRING>()[k]));
  if (v.type() == ORV_TYP_STRUCT) return structure_text(v.element(k), indent);
  return v.element(k).converted(ORV_TYP_STRING).to_text();
}

class ArrayText {
 public:
  ArrayText(const Value& array, std::string indent)
      : array_(array), dims_(array.dims()), indent_(std::move(indent)), elided_(array.count() > longest_shown) {
    measure(0, 0);
    std::string text;
    write(0, 0, text);
    text_ = std::move(text);
  }
  std::string take() {
    return std::move(text_);
  }

 private:
  // Positions along an extent; -1 stands for those left out.
  template <class F>
  void along(size_t d, F f) const {
    const bool cut = elided_ && dims_[d] > 2 * shown_at_ends;
    for (long k = 0; k < dims_[d]; ++k) {
      if (cut && k == shown_at_ends) {
        f(-1L);
        k = dims_[d] - shown_at_ends;
      }
      f(k);
    }
  }

  void measure(size_t d, long base) {
    if (array_.type() == ORV_TYP_STRUCT) return;
    along(d, [&](long k) {
      if (k < 0) return;
      if (d + 1 < dims_.size()) {
        measure(d + 1, base * dims_[d] + k);
      } else {
        width_ = std::max(width_, element_text(array_, base * dims_[d] + k, indent_).size());
      }
    });
  }

  void write(size_t d, long base, std::string& text) const {
    const std::string margin = indent_ + std::string(d + 1, ' ');
    text += '[';
    bool first = true;
    size_t column = margin.size();
    along(d, [&](long k) {
      if (d + 1 < dims_.size()) {
        if (!first) text += ",\n" + margin;
        if (k < 0) {
          text += "...";
        } else {
          write(d + 1, base * dims_[d] + k, text);
        }
      } else {
        std::string element = k < 0 ? "..." : element_text(array_, base * dims_[d] + k, margin);
        if (k >= 0 && element.size() < width_) {
          const std::string filler(width_ - element.size(), ' ');
          element = array_.is_text() ? element + filler : filler + element;
        }
        const bool wrap = !first && column + element.size() + 2 > line_width;
        if (!first) text += wrap ? ",\n" + margin : ", ";
        column = wrap ? margin.size() : column + 2;
        column += element.size();
        text += element;
      }
      first = false;
    });
    text += ']';
  }

  const Value& array_;
  const Dims& dims_;
  std::string indent_;
  bool elided_;
  size_t width_ = 0;
  std::string text_;
};

std::string structure_text(const Value& v, const std::string& indent) {
  std::string text = "{";
  const std::string margin = indent + " ";
  bool first = true;
  for (const std::string& name : v.tags()) {
    const Value tag = v.tag(name);
    const std::string inner = margin + std::string(name.size() + 2, ' ');
    if (!first) text += ",\n" + margin;
    first = false;
    text += name + ": ";
    text += tag.is_array() ? ArrayText(tag, inner).take() : element_text(tag, 0, inner);
  }
  return text + "}";
}

}  // namespace

std::string type_name(int type) {
  switch (type) {
    case ORV_TYP_UNDEF:
      return "undefined";
    case ORV_TYP_BYTE:
      return "byte";
    case ORV_TYP_FLOAT:
      return "float";
    case ORV_TYP_DOUBLE:
      return "double";
    case ORV_TYP_COMPLEX:
      return "complex";
    case ORV_TYP_STRING:
      return "string";
    case ORV_TYP_STRUCT:
      return "structure";
    case ORV_TYP_DCOMPLEX:
      return "dcomplex";
    case ORV_TYP_INT64:
      return "integer";
    default:
      return "type " + std::to_string(type);
  }
}

std::string describe(const Value& v) {
  std::string text = type_name(v.type());
  if (v.type() == ORV_TYP_STRUCT && !v.definition()->name.empty()) text += " " + v.definition()->name;
  return v.is_array() ? text + detail::shape_text(v.dims()) : text;
}

std::string to_display(const Value& v) {
  if (!v.defined()) return "undefined";
  if (v.is_array()) return ArrayText(v, "").take();
  return v.is_text() ? v.to_text() : element_text(v, 0, "");
}

}  // namespace orv
