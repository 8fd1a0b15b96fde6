#ifndef TEMVAR_VERSION_H_
#define TEMVAR_VERSION_H_

// The version of the headers that a host is compiled with. The version of the library that it runs
// with is in the version resource of the DLL on Windows, and in the file's name elsewhere.
//
// A new major number asks for changes in the host, or for a rebuild.
#define TMV_VERSION_MAJOR 1

// A new minor number adds.
#define TMV_VERSION_MINOR 1

// A new patch number mends.
#define TMV_VERSION_PATCH 0

// As text, "1.1.0".
#define TMV_VERSION_STRING             \
  TMV_VERSION_TEXT_(TMV_VERSION_MAJOR) \
  "." TMV_VERSION_TEXT_(TMV_VERSION_MINOR) "." TMV_VERSION_TEXT_(TMV_VERSION_PATCH)

// As one number that grows with each version, for comparisons: #if TMV_VERSION >= 10100.
#define TMV_VERSION (TMV_VERSION_MAJOR * 10000 + TMV_VERSION_MINOR * 100 + TMV_VERSION_PATCH)

// For TMV_VERSION_STRING: the value of a macro as text.
#define TMV_VERSION_TEXT_(number) TMV_VERSION_QUOTE_(number)

// For TMV_VERSION_STRING: its argument as text.
#define TMV_VERSION_QUOTE_(number) #number

#endif  // TEMVAR_VERSION_H_
