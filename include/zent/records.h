/* Records that public functions build for the caller. Each stands in one block: zent_free_allocated_memory releases all of it. */
#ifndef ZENT_RECORDS_H
#define ZENT_RECORDS_H

/* A piecewise polynomial. Coefficients of a cubic stand four a piece: value and first three derivatives at its left end. */
#define ZENT_PPOLY_RECORD(record, real)                                           \
  typedef struct {                                                                \
    long domain_dim, target_dim;                                                  \
    long* order;           /* domain_dim: polynomial order, 4 for cubics */       \
    long* num_coef;        /* target_dim: product of (breakpoints - 1) * order */ \
    long* num_breakpoints; /* domain_dim */                                       \
    real** breakpoints;    /* domain_dim vectors */                               \
    real** coef;           /* target_dim vectors */                               \
  } record

/* A tensor-product B-spline. */
#define ZENT_SPLINE_RECORD(record, real)                                      \
  typedef struct {                                                            \
    long domain_dim, target_dim;                                              \
    long* order;     /* domain_dim */                                         \
    long* num_coef;  /* domain_dim; a coefficient vector has their product */ \
    long* num_knots; /* domain_dim: num_coef + order */                       \
    real** knots;    /* domain_dim vectors */                                 \
    real** coef;     /* target_dim vectors */                                 \
  } record

/* A fit by radial functions: a weight for each center, then extra_terms polynomial coefficients. 72 bytes. */
#define ZENT_RADIAL_RECORD(record, real)                                            \
  typedef struct {                                                                  \
    long dimension, num_centers;                                                    \
    long extra_terms;   /* 0 none, 1 constant, dimension + 1 constant and linear */ \
    real* centers;      /* num_centers points of `dimension` numbers */             \
    real* coefficients; /* num_centers + extra_terms */                             \
    real (*radial_function)(real r);                                                \
    real delta; /* parameter of the default function */                             \
    void* radial_function_data;                                                     \
    real (*radial_function_with_data)(void* data, real r); /* takes precedence */   \
  } record

ZENT_PPOLY_RECORD(Zent_f_ppoly, float);
ZENT_PPOLY_RECORD(Zent_d_ppoly, double);
ZENT_SPLINE_RECORD(Zent_f_spline, float);
ZENT_SPLINE_RECORD(Zent_d_spline, double);
ZENT_RADIAL_RECORD(Zent_f_radial_fit, float);
ZENT_RADIAL_RECORD(Zent_d_radial_fit, double);

#undef ZENT_PPOLY_RECORD
#undef ZENT_SPLINE_RECORD
#undef ZENT_RADIAL_RECORD

/* One element of a sparse matrix in coordinate form; indices count from 0. */
typedef struct {
  long row, col;
  float val;
} Zent_f_sparse_elem;
typedef struct {
  long row, col;
  double val;
} Zent_d_sparse_elem;
typedef struct {
  long row, col;
  struct {
    float re, im;
  } val;
} Zent_c_sparse_elem;
typedef struct {
  long row, col;
  struct {
    double re, im;
  } val;
} Zent_z_sparse_elem;

#endif
