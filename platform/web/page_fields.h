#pragma once

#include <emscripten/bind.h>

#include "platform/web/page_types.h"

// Names to be known in the page as they are in C++, each told once.
//
//   VEYLA_VALUE(DashPattern, on, off);                    an object with these fields
//   class_<Alerts>("Alerts") VEYLA_METHODS(Alerts, tapClose, tapOutside);

#define VEYLA_PARENTHESES ()
#define VEYLA_EXPAND(...) VEYLA_EXPAND_4(VEYLA_EXPAND_4(VEYLA_EXPAND_4(__VA_ARGS__)))
#define VEYLA_EXPAND_4(...) VEYLA_EXPAND_3(VEYLA_EXPAND_3(VEYLA_EXPAND_3(__VA_ARGS__)))
#define VEYLA_EXPAND_3(...) VEYLA_EXPAND_2(VEYLA_EXPAND_2(VEYLA_EXPAND_2(__VA_ARGS__)))
#define VEYLA_EXPAND_2(...) __VA_ARGS__
#define VEYLA_EACH(macro, Type, ...) VEYLA_EXPAND(VEYLA_NEXT(macro, Type, __VA_ARGS__))
#define VEYLA_NEXT(macro, Type, name, ...) \
  macro(Type, name) __VA_OPT__(VEYLA_AGAIN VEYLA_PARENTHESES(macro, Type, __VA_ARGS__))
#define VEYLA_AGAIN() VEYLA_NEXT

#define VEYLA_FIELD(Type, name) .field(#name, &Type::name)
#define VEYLA_METHOD(Type, name) .function(#name, &Type::name)

#define VEYLA_VALUE(Type, ...) \
  emscripten::value_object<Type>(#Type) VEYLA_EACH(VEYLA_FIELD, Type, __VA_ARGS__)
#define VEYLA_METHODS(Type, ...) VEYLA_EACH(VEYLA_METHOD, Type, __VA_ARGS__)
