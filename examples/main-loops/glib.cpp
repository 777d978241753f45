// The library's main queue in a GLib main loop, such as GTK's.

#include <glib-unix.h>

#include "SignIn.h"

int main(int argumentCount, char** arguments) {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);

    // The descriptor is readable as long as tasks wait.
    const auto drain = [](gint, GIOCondition, gpointer) -> gboolean {
        RKTMainQueue::drain();
        return G_SOURCE_CONTINUE;
    };
    const guint source = g_unix_fd_add(RKTMainQueue::fileDescriptor(), G_IO_IN, drain, nullptr);

    const SignIn signIn(argumentCount, arguments);
    int status = 1;
    signIn.start([&](int exitStatus) {
        status = exitStatus;
        g_main_loop_quit(loop);
    });
    g_main_loop_run(loop);

    g_source_remove(source);
    g_main_loop_unref(loop);
    return status;
}
