// The entry point of the module: structures, message block, routine table.
#include "binding/cmast.h"

namespace {

// Elements of a sparse matrix in coordinate form, laid out like the library's own so that arrays are copied byte for byte.
template <long value_type>
constexpr ORV_STRUCT_TAG element_tags[] = {{"ROW", nullptr, ORV_TYP_INT64, 0},
                                           {"COL", nullptr, ORV_TYP_INT64, 0},
                                           {"VAL", nullptr, value_type, 0},
                                           {nullptr, nullptr, 0, 0}};

}  // namespace

extern "C" int ORV_Load(void) {
  ORV_MakeStruct("ZENT_F_SP_ELEM", element_tags<ORV_TYP_FLOAT>);
  ORV_MakeStruct("ZENT_D_SP_ELEM", element_tags<ORV_TYP_DOUBLE>);
  ORV_MakeStruct("ZENT_C_SP_ELEM", element_tags<ORV_TYP_COMPLEX>);
  ORV_MakeStruct("ZENT_Z_SP_ELEM", element_tags<ORV_TYP_DCOMPLEX>);
  if (_ORV_orv_zent_msg_init() == nullptr) return 0;
  return _ORV_orv_zent_rtn_init() == 1;
}
