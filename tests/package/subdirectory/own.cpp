// The embedder's own program, which does not use the library: its standard stays what it was.

static_assert(__cplusplus == 201703L,
              "embedding the library changed the standard of another target");

int main() {}
