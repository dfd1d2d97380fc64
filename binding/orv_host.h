/* The operations of the host that the module needs: the program that loads the module serves them.
 *
 * Type codes are int, element counts and dimensions long, data pointers void *. Actions: 2 raises and does not come back (it
 * leaves by longjmp to the buffer of ORV_MessageSJE), 0x80004 prints as information and returns, 7 keeps the text in a saved state. */
#ifndef ORV_HOST_H
#define ORV_HOST_H

#include <setjmp.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Type codes of a variable. */
enum {
  ORV_TYP_UNDEF = 0,
  ORV_TYP_BYTE = 1,
  ORV_TYP_FLOAT = 4,
  ORV_TYP_DOUBLE = 5,
  ORV_TYP_COMPLEX = 6,
  ORV_TYP_STRING = 7,
  ORV_TYP_STRUCT = 8,
  ORV_TYP_DCOMPLEX = 9,
  ORV_TYP_INT64 = 14
};

/* Flags of a variable that a module reads. */
enum { ORV_V_TEMP = 2, ORV_V_DYNAMIC = 16 };

/* Actions of a message. */
enum { ORV_MSG_RAISE = 2, ORV_MSG_SAVE = 7, ORV_MSG_INFO = 0x80004 };

typedef struct { int len; char *text; } ORV_STRING;              /* len at 0, text at 8; text valid only if len != 0 */
typedef struct { float re, im; } ORV_COMPLEX; typedef struct { double re, im; } ORV_DCOMPLEX;
typedef struct ORV_VARIABLE {
  unsigned char type, flags;                                       /* flags: 2 temporary, 16 dynamic */
  union { unsigned char c; int l; float f; double d; ORV_COMPLEX cmp; ORV_DCOMPLEX dcmp; long l64; ORV_STRING str; void *arr; } value;  /* at 8 */
} ORV_VARIABLE;                                                    /* 24 bytes */
typedef const char *ORV_IDENT;                                     /* interned, upper case; equal names give equal pointers */
typedef struct { ORV_IDENT name; const long *dims; long type; long flags; } ORV_STRUCT_TAG;  /* dims[0] = number of dimensions, then extents; null = scalar; a row of nulls ends */
typedef struct ORV_SDEF_ *ORV_SDEF;   typedef struct ORV_MSG_BLOCK_ *ORV_MSG_BLOCK;
typedef struct { const char *name, *format; } ORV_MSG_ROW;
typedef struct { char text[4096]; } ORV_ERRSTATE;                  /* opaque to the module */
typedef long (*ORV_PROC)(int argc, ORV_VARIABLE **argv, char *argk);   /* wrappers return 0; a result of cmast_init that isn't 0 is passed on */
typedef struct { ORV_PROC handler; const char *name; unsigned short min_args, max_args; unsigned int flags; void *extra; } ORV_SYSRTN;  /* 32 bytes */
typedef struct { unsigned char kind; int argc; ORV_IDENT ident; long cell2; ORV_VARIABLE **argv; long cell4; ORV_VARIABLE *result; long cell6; } ORV_CALLREC;  /* 56 bytes, argc at 4 */

void          ORV_VarGetData(ORV_VARIABLE *v, long *count, void **data, int zero);
char         *ORV_VarGetString(ORV_VARIABLE *v);
ORV_VARIABLE *ORV_VarTypeConvert(ORV_VARIABLE *v, int type);
void          ORV_VarCopy(ORV_VARIABLE *source, ORV_VARIABLE *target);
void         *ORV_MakeTempArray(int type, int n_dims, const long *dims, int init, ORV_VARIABLE **v);
void         *ORV_MakeTempVector(int type, long n, int init, ORV_VARIABLE **v);
void         *ORV_MakeTempStructVector(ORV_SDEF def, long n, ORV_VARIABLE **v, int zero);
ORV_SDEF      ORV_MakeStruct(const char *name, const ORV_STRUCT_TAG *tags);
void         *ORV_StructGetTagAddress(ORV_VARIABLE *v, const char *tag, int zero, int one, void *null_);
ORV_IDENT     ORV_StructTagIdentHash(const char *tag);
ORV_VARIABLE *ORV_ImportArray(int n_dims, const long *dims, int type, void *data, void (*release)(void *), ORV_SDEF def);
ORV_VARIABLE *ORV_Gettmp(void);
void          ORV_Deltmp(ORV_VARIABLE *v);
void          ORV_Delvar(ORV_VARIABLE *v);
void         *ORV_GetScratch(ORV_VARIABLE **v, long n, long element_size);
void          ORV_StoreScalar(ORV_VARIABLE *v, int type, const void *value);
void          ORV_StrStore(ORV_STRING *target, const char *text);
double        ORV_DoubleScalar(ORV_VARIABLE *v);
long          ORV_MEMINTScalar(ORV_VARIABLE *v);
long          ORV_TypeSizeFunc(int type);
ORV_IDENT     ORV_IdentHash(const char *name, int a0, int a1, int a2, int a3);        /* called (name, 0, 1, 2, 0) */
void          ORV_InterpCallFromSysproc(ORV_CALLREC *rec);
ORV_MSG_BLOCK ORV_MessageDefineBlock(const char *name, int n, const ORV_MSG_ROW *rows);
void          ORV_MessageFromBlock(ORV_MSG_BLOCK block, int code, int action, ...);     /* values: const char * */
void          ORV_MessageSyscode2FromBlock(ORV_MSG_BLOCK block, int code, int one, int zero, int action, ORV_ERRSTATE *state, ...);
void          ORV_MessageThrowErrstate(int action, ORV_ERRSTATE *state);
void          ORV_MessageVE_UNDEFVAR(ORV_VARIABLE *v, int action);
jmp_buf      *ORV_MessageGJE(void);
void          ORV_MessageSJE(jmp_buf *buffer);
long          ORV_StrBase_strlcpy(char *target, const char *text, long size);          /* returns strlen(text) */
int           ORV_SysRtnAdd(const ORV_SYSRTN *rows, int is_function, int n);             /* 1 accepted, 0 not */

#ifdef __cplusplus
}
#endif
#endif
