// Eigenvalues and vectors of complex Hermitian matrices.
#include "math/eigen/sym_options.hpp"

ZENT_SYMMETRIC_FORM(c, eig_herm, zent_f_complex, float)
ZENT_SYMMETRIC_FORM(z, eig_herm, zent_d_complex, double)
