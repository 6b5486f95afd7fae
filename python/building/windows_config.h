/*
 * windows_config.h : what Python's headers have to be told about Windows on x86_64, where MinGW
 * builds a module for the stable interface. It comes before the pyconfig.h of the building machine,
 * whose place it takes: the stable interface is the same everywhere.
 */
#ifndef Py_PYCONFIG_H
#define Py_PYCONFIG_H

#define MS_WINDOWS 1
#define MS_WIN32 1
#define MS_WIN64 1
#define HAVE_DECLSPEC_DLL 1
#define Py_ENABLE_SHARED 1
#define HAVE_SSIZE_T 1
#define HAVE_STDDEF_H 1
#define HAVE_STDINT_H 1
#define HAVE_INTTYPES_H 1
#define HAVE_SYS_TYPES_H 1
#define HAVE_SYS_STAT_H 1
#define HAVE_WCHAR_H 1
#define HAVE_LONG_LONG 1

#define SIZEOF_SHORT 2
#define SIZEOF_INT 4
#define SIZEOF_LONG 4
#define SIZEOF_LONG_LONG 8
#define SIZEOF_FLOAT 4
#define SIZEOF_DOUBLE 8
#define SIZEOF_WCHAR_T 2
#define SIZEOF_VOID_P 8
#define SIZEOF_SIZE_T 8
#define SIZEOF_TIME_T 8
#define SIZEOF_OFF_T 4
#define SIZEOF_FPOS_T 8
#define SIZEOF_PID_T 8
#define SIZEOF_UINTPTR_T 8
#define SIZEOF__BOOL 1
#define ALIGNOF_LONG 4
#define ALIGNOF_SIZE_T 8
#define ALIGNOF_MAX_ALIGN_T 16

#endif
