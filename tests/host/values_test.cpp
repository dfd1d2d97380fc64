// Values of the host: conversions, arithmetic with broadcasting, parts of arrays, structures, display.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/value.hpp"

namespace {

using orv::apply;
using orv::Binary;
using orv::Dims;
using orv::Error;
using orv::Subscript;
using orv::Value;

Value reals(const Dims& dims, std::vector<double> elements) {
  Value v = Value::array(ORV_TYP_DOUBLE, dims);
  std::copy(elements.begin(), elements.end(), static_cast<double*>(v.writable()));
  return v;
}

std::vector<double> elements(const Value& v) {
  const Value wide = v.converted(ORV_TYP_DOUBLE);
  return {wide.as<double>(), wide.as<double>() + wide.count()};
}

template <class F>
std::string message_of(F f) {
  try {
    f();
  } catch (const Error& error) {
    return error.what();
  }
  return "(no error)";
}

Subscript at(long k) {
  Subscript s;
  s.kind = Subscript::single;
  s.first = k;
  return s;
}
Subscript range(long first, long last, long step = 1) {
  Subscript s;
  s.kind = Subscript::range;
  s.first = first;
  s.last = last;
  s.step = step;
  return s;
}

TEST(Conversions, KeepWhatFitsAndRefuseTheRest) {
  EXPECT_EQ(Value::text(" 42 ").to_integer(), 42);
  EXPECT_EQ(Value::text("-1e3").to_real(), -1000);
  EXPECT_EQ(Value::integer(9007199254740993).to_integer(), 9007199254740993);
  EXPECT_EQ(Value::text("9007199254740993").converted(ORV_TYP_INT64).to_integer(), 9007199254740993);
  EXPECT_EQ(Value::real(-2.7).converted(ORV_TYP_INT64).to_integer(), -2);
  EXPECT_THROW(Value::real(2.5).to_integer(), Error);
  EXPECT_THROW(Value::real(9.3e18).converted(ORV_TYP_INT64), Error);
  EXPECT_THROW(Value::real(std::nan("")).converted(ORV_TYP_INT64), Error);
  EXPECT_THROW(Value::integer(256).converted(ORV_TYP_BYTE), Error);
  EXPECT_THROW(Value::text("12x").to_real(), Error);
  EXPECT_THROW(Value().to_real(), Error);
  EXPECT_NE(message_of([] { reals({2, 2}, {1, 2, 3, 4}).to_real(); }).find("double[2,2]"), std::string::npos);
}

TEST(Values, CopiesShareUntilOneIsWritten) {
  Value a = reals({3}, {1, 2, 3});
  Value b = a;
  EXPECT_EQ(a.data(), b.data());
  b.set_element(1, Value::integer(7));
  EXPECT_EQ(elements(a), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(elements(b), (std::vector<double>{1, 7, 3}));
  EXPECT_EQ(a.reshaped({3, 1}).dims(), (Dims{3, 1}));
  EXPECT_THROW(a.reshaped({2, 2}), Error);
  EXPECT_THROW(Value::array(ORV_TYP_DOUBLE, {-1}), Error);
  EXPECT_THROW(Value::array(ORV_TYP_DOUBLE, {1L << 40, 1L << 40}), Error);
}

TEST(Arithmetic, IntegersStayIntegersUntilTheyDoNotFit) {
  const auto both = [](Binary op, long x, long y) { return apply(op, Value::integer(x), Value::integer(y)); };
  const long most = std::numeric_limits<long>::max();
  EXPECT_EQ(both(Binary::add, 2, 3).type(), ORV_TYP_INT64);
  EXPECT_EQ(both(Binary::divide, 6, 3).type(), ORV_TYP_DOUBLE);
  EXPECT_EQ(both(Binary::power, 3, 39).to_integer(), 4052555153018976267);
  EXPECT_EQ(both(Binary::power, 3, 40).type(), ORV_TYP_DOUBLE);
  EXPECT_EQ(both(Binary::power, 2, -1).to_real(), 0.5);
  EXPECT_EQ(both(Binary::multiply, most, 2).to_real(), 0x1p64);
  EXPECT_EQ(both(Binary::modulo, -7, 3).to_integer(), -1);
  EXPECT_EQ(both(Binary::modulo, std::numeric_limits<long>::min(), -1).to_integer(), 0);
  EXPECT_THROW(both(Binary::modulo, 1, 0), Error);
  EXPECT_TRUE(both(Binary::less, most - 1, most).to_bool()) << "no detour through double";
}

TEST(Arithmetic, ScalarsSpreadAndShapesMustAgree) {
  const Value a = reals({2, 2}, {1, 2, 3, 4});
  EXPECT_EQ(elements(apply(Binary::subtract, Value::integer(10), a)), (std::vector<double>{9, 8, 7, 6}));
  EXPECT_EQ(elements(apply(Binary::greater, a, Value::real(2))), (std::vector<double>{0, 0, 1, 1}));
  const std::string why = message_of([&] { apply(Binary::add, a, reals({4}, {1, 2, 3, 4})); });
  EXPECT_NE(why.find("[2,2]"), std::string::npos) << why;
  EXPECT_NE(why.find("[4]"), std::string::npos) << why;
  EXPECT_THROW(apply(Binary::add, a, Value()), Error);
  EXPECT_THROW(apply(Binary::add, a, Value::text("x")), Error);
  EXPECT_EQ(apply(Binary::add, Value::text("ab"), Value::text("c")).to_text(), "abc");
}

TEST(Arithmetic, MatrixProducts) {
  const Value a = reals({2, 3}, {1, 2, 3, 4, 5, 6});
  const Value product = apply(Binary::matrix_multiply, a, reals({3, 1}, {1, 0, -1}));
  EXPECT_EQ(product.dims(), (Dims{2, 1}));
  EXPECT_EQ(elements(product), (std::vector<double>{-2, -2}));
  EXPECT_EQ(apply(Binary::matrix_multiply, reals({2}, {3, 4}), reals({2}, {3, 4})).to_real(), 25);
  EXPECT_THROW(apply(Binary::matrix_multiply, a, a), Error);
}

TEST(Arithmetic, ElementwiseFunctionsKeepThePrecision) {
  Value result;
  ASSERT_TRUE(orv::elementwise("sqrt", Value::real(2).converted(ORV_TYP_FLOAT), result));
  EXPECT_EQ(result.type(), ORV_TYP_FLOAT);
  EXPECT_EQ(*result.as<float>(), 0x1.6a09e6p+0f);
  ASSERT_TRUE(orv::elementwise("sqrt", Value::real(-4).converted(ORV_TYP_DCOMPLEX), result));
  EXPECT_EQ(result.as<ORV_DCOMPLEX>()->im, 2);
  ASSERT_TRUE(orv::elementwise("abs", Value::integer(std::numeric_limits<long>::min()), result));
  EXPECT_EQ(result.to_real(), 0x1p63);
  EXPECT_FALSE(orv::elementwise("frobnicate", Value::real(1), result));
  EXPECT_THROW(orv::elementwise("floor", Value::zero(ORV_TYP_COMPLEX), result), Error);
}

TEST(Indexing, ReadsAndWritesParts) {
  Value a = reals({2, 3}, {0, 1, 2, 3, 4, 5});
  EXPECT_EQ(index(a, {at(4)}).to_real(), 4) << "one subscript counts through the whole array";
  EXPECT_EQ(index(a, {at(1), at(2)}).to_real(), 5);
  const Value column = index(a, {Subscript(), at(1)});
  EXPECT_EQ(column.dims(), (Dims{2}));
  EXPECT_EQ(elements(column), (std::vector<double>{1, 4}));
  EXPECT_EQ(elements(index(a, {at(0), range(2, 0, -2)})), (std::vector<double>{2, 0}));
  EXPECT_EQ(index(a, {range(1, 0)}).count(), 0);
  EXPECT_THROW(index(a, {at(6)}), Error);
  EXPECT_THROW(index(a, {at(0), range(0, 3)}), Error);
  EXPECT_THROW(index(a, {at(0), at(0), at(0)}), Error);

  assign_index(a, {range(5, 0, -1)}, a);
  EXPECT_EQ(elements(a), (std::vector<double>{5, 4, 3, 2, 1, 0})) << "the source is read before it is written";
  EXPECT_THROW(assign_index(a, {range(0, 1)}, reals({3}, {1, 2, 3})), Error);
  Value whole = Value::array(ORV_TYP_INT64, {2});
  EXPECT_THROW(assign_index(whole, {at(0)}, Value::real(2.5)), Error);
  assign_index(whole, {Subscript()}, Value::real(3));
  EXPECT_EQ(elements(whole), (std::vector<double>{3, 3}));
  Value texts = Value::array(ORV_TYP_STRING, {2});
  assign_index(texts, {at(1)}, Value::text("second"));
  EXPECT_EQ(texts.to_texts(), (std::vector<std::string>{"", "second"}));
}

TEST(Structures, TagsHoldTheirOwnCopies) {
  const ORV_SDEF inner = orv::define_structure({{"s", Value::text("")}});
  const ORV_SDEF outer =
      orv::define_structure({{"flag", Value::boolean(true)}, {"x", reals({2}, {0, 0})}, {"in", Value::structure(inner, -1)}});
  EXPECT_EQ(outer, orv::define_structure(
                       {{"FLAG", Value::boolean(false)}, {"X", reals({2}, {1, 1})}, {"IN", Value::structure(inner, -1)}}));
  Value a = Value::structure(outer, 2);
  Value text = Value::structure(inner, -1);
  text.set_tag("S", Value::text("kept"));
  a.set_tag("IN", text, 1);
  text.set_tag("S", Value::text("changed"));
  Value b = a;
  b.set_tag("X", Value::integer(4), 1);
  EXPECT_EQ(a.tag("in", 1).tag("s").to_text(), "kept");
  EXPECT_EQ(elements(a.tag("X", 1)), (std::vector<double>{0, 0}));
  EXPECT_EQ(elements(b.tag("X", 1)), (std::vector<double>{4, 4}));
  EXPECT_THROW(a.set_tag("X", reals({3}, {1, 2, 3})), Error);
  EXPECT_THROW(a.tag("FLAG", 2), Error);
  EXPECT_NE(message_of([&] { a.tag("nope"); }).find("FLAG, X, IN"), std::string::npos);
  EXPECT_THROW(orv::define_structure({{"a", Value::real(1)}, {"A", Value::real(1)}}), Error);
}

TEST(Display, ShortestNumbersAlignedColumnsAndElision) {
  EXPECT_EQ(to_display(Value::real(0.1)), "0.1");
  EXPECT_EQ(to_display(Value::real(100000)), "100000");
  EXPECT_EQ(std::stod(to_display(Value::real(1.0 / 3))), 1.0 / 3);
  EXPECT_EQ(to_display(Value::real(0.1).converted(ORV_TYP_FLOAT)), "0.1");
  EXPECT_EQ(to_display(Value::real(1.5).converted(ORV_TYP_COMPLEX)), "(1.5,0)");
  EXPECT_EQ(to_display(reals({2, 2}, {1, 20, 300, 4})), "[[  1,  20],\n [300,   4]]");
  const std::string text = to_display(Value::array(ORV_TYP_DOUBLE, {2000, 2000}));
  EXPECT_NE(text.find("..."), std::string::npos);
  EXPECT_LT(text.size(), 300u);
}

}  // namespace
