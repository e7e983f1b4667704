#pragma once

/// Puts a function where it is used, whatever the compiler thinks of its size. For the few that are
/// smaller than a call and on every path. A build that is not optimised keeps them as they are
/// written: to be stepped through, and so that their branches are counted once and not at each use.
#ifdef __OPTIMIZE__
#define ORM_ALWAYS_INLINE [[gnu::always_inline]]
#else
#define ORM_ALWAYS_INLINE
#endif
