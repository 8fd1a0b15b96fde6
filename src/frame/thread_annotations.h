// Names for clang's thread-safety analysis; other compilers see nothing.
#ifndef TEMVAR_FRAME_THREAD_ANNOTATIONS_H_
#define TEMVAR_FRAME_THREAD_ANNOTATIONS_H_

#if defined(__clang__)
#define TMV_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define TMV_THREAD_ATTRIBUTE(x)
#endif

#define TMV_CAPABILITY(name) TMV_THREAD_ATTRIBUTE(capability(name))
#define TMV_SCOPED_CAPABILITY TMV_THREAD_ATTRIBUTE(scoped_lockable)
#define TMV_GUARDED_BY(mutex) TMV_THREAD_ATTRIBUTE(guarded_by(mutex))
#define TMV_ACQUIRED_AFTER(...) TMV_THREAD_ATTRIBUTE(acquired_after(__VA_ARGS__))
#define TMV_REQUIRES(...) TMV_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define TMV_EXCLUDES(...) TMV_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define TMV_ACQUIRE(...) TMV_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define TMV_RELEASE(...) TMV_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define TMV_NO_THREAD_SAFETY_ANALYSIS TMV_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#endif  // TEMVAR_FRAME_THREAD_ANNOTATIONS_H_
