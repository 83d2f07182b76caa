#pragma once

#include <emscripten/val.h>

#include <array>
#include <concepts>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/color.h"
#include "platform/date.h"
#include "platform/display.h"
#include "platform/font.h"
#include "platform/format.h"

namespace veyla {

/// The guise in which a type that embind does not know crosses into the page: it travels as
/// `Carried`, made by `to` and, where the page hands values back, read by `from`.
template <class T>
struct PageType;

/// Texts that the core keeps.
template <>
struct PageType<std::string_view> {
  using Carried = std::string;
  static Carried to(std::string_view text) { return std::string(text); }
};

/// By its name.
template <>
struct PageType<Element> {
  using Carried = std::string;
  static Carried to(const Element& element) { return std::string(element.name); }
};

/// As CSS writes it, such as "rgb(200 2 0 / 1)".
template <>
struct PageType<Color> {
  using Carried = std::string;
  static Carried to(const Color& color) {
    return formatText("rgb(%.4g %.4g %.4g / %.4g)", color.red * 255, color.green * 255,
                      color.blue * 255, color.alpha);
  }
};

/// As the weight and size of a CSS font, such as "300 11px", to be followed by the page's family.
template <>
struct PageType<Font> {
  using Carried = std::string;
  static Carried to(const Font& font) {
    return formatText("%d %.4gpx", font.weight(), static_cast<double>(font.size));
  }
};

/// In seconds since 1970.
template <>
struct PageType<Date> {
  using Carried = double;
  static Carried to(const Date& date) { return date.secondsSince1970; }
  static Date from(Carried seconds) { return {seconds}; }
};

/// Null for nothing.
template <class T>
struct PageType<std::optional<T>> {
  using Carried = emscripten::val;
  static Carried to(const std::optional<T>& value) {
    return value ? Carried(*value) : Carried::null();
  }
  static std::optional<T> from(const Carried& value) {
    if (value.isNull() || value.isUndefined()) return std::nullopt;
    return value.as<T>();
  }
};

/// An array of its own.
template <class T>
struct PageType<std::vector<T>> {
  using Carried = emscripten::val;
  static Carried to(const std::vector<T>& list) { return Carried::array(list); }
};
template <class T, std::size_t size>
struct PageType<std::array<T, size>> {
  using Carried = emscripten::val;
  static Carried to(const std::array<T, size>& list) {
    return Carried::array(list.begin(), list.end());
  }
};

/// The names of an enumeration's values in the page, in their order.
template <class T>
struct PageNames;

template <class T>
requires requires { PageNames<T>::names; }
struct PageType<T> {
  using Carried = std::string;
  static Carried to(T value) {
    return std::string(PageNames<T>::names[static_cast<std::size_t>(value)]);
  }
};

template <class T>
concept HasPageType = requires {
  typename PageType<T>::Carried;
};

}  // namespace veyla

// Where embind looks for how a type crosses.
namespace emscripten::internal {

template <class T>
requires veyla::HasPageType<std::remove_cvref_t<T>>
struct TypeID<T, void> : TypeID<typename veyla::PageType<std::remove_cvref_t<T>>::Carried> {
};

template <veyla::HasPageType T>
struct BindingType<T, void> {
  using Type = veyla::PageType<T>;
  using Carrier = BindingType<typename Type::Carried>;
  using WireType = typename Carrier::WireType;

  static WireType toWireType(const T& value) { return Carrier::toWireType(Type::to(value)); }
  static T fromWireType(WireType wire) {
    if constexpr (requires { Type::from(Carrier::fromWireType(wire)); }) {
      return Type::from(Carrier::fromWireType(wire));
    } else {
      // Asked for by the type of a field alone: the page hands none back.
      std::abort();
    }
  }
};

}  // namespace emscripten::internal
