// Eigenvalues and vectors of real symmetric matrices.
#include "math/eigen/sym_options.hpp"

ZENT_SYMMETRIC_FORM(f, eig_sym, float, float)
ZENT_SYMMETRIC_FORM(d, eig_sym, double, double)
