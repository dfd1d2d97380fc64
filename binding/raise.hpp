// Errors that a wrapper finds itself, before or behind the library.
#pragma once

#include "binding/cmast.h"

namespace zent::binding {

// "ZENT Error: <text>." Comes back only from a host that returns from a raise: the caller then returns at once.
inline void raise_error(const char* text) {
  ORV_MessageFromBlock(_ORV_orv_zent_msg_block, ORV_M_ZENT_ERROR, ORV_MSG_RAISE, text);
}

// The same for an argument that is refused: the label stands for a call in progress only, so it goes first. False.
inline bool refuse(const char* text) {
  cmast_pop_fcn_name();
  raise_error(text);
  return false;
}

}  // namespace zent::binding
