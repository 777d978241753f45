// Macros that an application has already got from its platform or toolkit when it includes a public
// header. Each stands for a token that fits nowhere, so a header that uses the word is found.

#ifndef KORVOGITSERVICE_TESTS_HOSTILE_MACROS_H
#define KORVOGITSERVICE_TESTS_HOSTILE_MACROS_H

// GNU modes of the compilers
#undef unix
#undef linux
#define unix ?
#define linux ?

// glibc <sys/sysmacros.h>, BSD <sys/param.h>
#undef major
#undef minor
#undef makedev
#define major(device) ?
#define minor(device) ?
#define makedev(high, low) ?
#define roundup(x, y) ?
#define howmany(x, y) ?

// macOS <AssertMacros.h>, <objc/objc.h>
#define check(assertion) ?
#define verify(assertion) ?
#define require(assertion, label) ?
#define nil ?
#define Nil ?
#define YES ?
#define NO ?

// Windows <windows.h>
#define interface ?
#define near ?
#define far ?
#define small ?
#define hyper ?
#define min(a, b) ?
#define max(a, b) ?
#define IN ?
#define OUT ?
#define OPTIONAL ?
#define DELETE ?
#define ERROR ?
#define NO_ERROR ?
#define STRICT ?
#define TRUE ?
#define FALSE ?
#define GetMessage ?
#define GetObject ?
#define SendMessage ?
#define CreateService ?

// X11 <X11/X.h>, <X11/Xlib.h>
#define None ?
#define Always ?
#define Success ?
#define Status ?
#define Bool ?
#define True ?
#define False ?
#define Unsorted ?
#define Complex ?
#define KeyPress ?

// Qt <QtGlobal>, GLib
#define signals ?
#define slots ?
#define emit ?
#define foreach(variable, container) ?
#define forever ?

// C <complex.h>, old <math.h>, system and build settings
#define I ?
#define DOMAIN ?
#define OVERFLOW ?
#define PAGE_SIZE ?
#define DEBUG ?

#endif
