#include "bench/pools.h"

#ifdef BENCH_HAS_GLIB
#include <glib.h>
#endif
#ifdef BENCH_HAS_TBB
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/task_arena.h>
#endif

namespace bench {
namespace {

#ifdef BENCH_HAS_GLIB
class GlibPool : public Pool {
 public:
  explicit GlibPool(size_t workers)
      : pool_(g_thread_pool_new(Run, nullptr, static_cast<gint>(workers), TRUE, nullptr)) {}
  ~GlibPool() override { g_thread_pool_free(pool_, FALSE, TRUE); }

  void Add(const Work* work) override {
    g_thread_pool_push(pool_, const_cast<Work*>(work), nullptr);
  }

 private:
  static void Run(gpointer data, gpointer) {
    const auto* const work = static_cast<const Work*>(data);
    work->run(work->data);
  }

  GThreadPool* const pool_;
};
#endif

#ifdef BENCH_HAS_TBB
// The caller only waits, so that it is one more thread here as it is with the others.
class TbbPool : public Pool {
 public:
  explicit TbbPool(size_t workers)
      : threads_(tbb::global_control::max_allowed_parallelism, workers + 1),
        arena_(static_cast<int>(workers), 0) {}

  void Add(const Work* work) override {
    arena_.enqueue([work] { work->run(work->data); });
  }

 private:
  tbb::global_control threads_;
  tbb::task_arena arena_;
};
#endif

}  // namespace

std::vector<NamedPool> MakePools(size_t workers) {
  std::vector<NamedPool> pools;
  pools.push_back({"plain", std::make_unique<PlainPool>(workers)});
#ifdef BENCH_HAS_GLIB
  pools.push_back({"glib", std::make_unique<GlibPool>(workers)});
#endif
#ifdef BENCH_HAS_TBB
  pools.push_back({"tbb", std::make_unique<TbbPool>(workers)});
#endif
  return pools;
}

}  // namespace bench
