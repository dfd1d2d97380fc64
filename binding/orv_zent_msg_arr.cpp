// The module's messages. The host numbers them 0, -1, -2 in this order.
#include "binding/cmast.h"

namespace {

constexpr ORV_MSG_ROW messages[] = {
    {"ORV_M_ZENT_LIBRARYERROR", "ZENT Error: ZENT_%s: %s: %s: %s"},
    {"ORV_M_ZENT_ERROR", "ZENT Error: %s."},
    {"ORV_M_ZENT_WRGNUMELEM", "Incorrect number of elements for user-supplied routine."},
};

}  // namespace

extern "C" {

ORV_MSG_BLOCK _ORV_orv_zent_msg_block;

ORV_MSG_BLOCK _ORV_orv_zent_msg_init(void) {
  _ORV_orv_zent_msg_block = ORV_MessageDefineBlock("ORV_MBLK_ZENT", 3, messages);
  return _ORV_orv_zent_msg_block;
}
}
