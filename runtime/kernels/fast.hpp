// The primitives as the library uses them: the same arguments and semantics as the plain versions in zent::kernel, the same
// results to rounding, at the speed of the machine.
#pragma once

#include "runtime/kernels/blocks.hpp"

namespace zent::fast {

using kernel::axpy;
using kernel::dot;
using kernel::dotc;
using kernel::dotu;
using kernel::gemm;
using kernel::gemv;
using kernel::ger;
using kernel::gerc;
using kernel::geru;
using kernel::iamax;
using kernel::nrm2;
using kernel::rot;
using kernel::rot_columns;
using kernel::scal;
using kernel::swap;
using kernel::symv;
using kernel::syr2k;
using kernel::syrk;
using kernel::transpose;
using kernel::transpose_square;
using kernel::trmm;
using kernel::trsm;
using kernel::trsv;

}  // namespace zent::fast
