// Marks what the shared library exports. Everything else is compiled with hidden visibility, so a
// class or function without this mark can change from one release to the next.
//
// The mark means the same in the static library, where it keeps an application that re-exports the
// library from hiding its types by accident (exceptions are matched by exported type information).

#ifndef KORVOGITSERVICE_RKTEXPORT_H
#define KORVOGITSERVICE_RKTEXPORT_H

#define RKT_EXPORT __attribute__((visibility("default")))

#endif
