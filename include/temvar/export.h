#ifndef TEMVAR_EXPORT_H_
#define TEMVAR_EXPORT_H_

// TMV_API marks the functions that leave the library. Everything else stays inside. A host that is
// compiled with TEMVAR_LOADED finds them at run time, see temvar/load.h.
#if defined(TEMVAR_LOADED)
#define TMV_API extern "C"
#elif defined(_WIN32)
#if defined(TEMVAR_BUILDING)
#define TMV_API extern "C" __declspec(dllexport)
#else
#define TMV_API extern "C" __declspec(dllimport)
#endif
#else
#define TMV_API extern "C" __attribute__((visibility("default")))
#endif

#endif  // TEMVAR_EXPORT_H_
