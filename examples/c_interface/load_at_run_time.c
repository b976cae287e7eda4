/* load_at_run_time LIBRARY: uses the library without being linked to it, as a plug-in or the
 * runtime of another language does. The header gives types and constants; functions are found by
 * name. */
#include <sarnum/c.h>
#include <stdio.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

/* The address of a function: an object whose type the caller knows. */
static int find(void* library, const char* name, void* function, size_t size) {
#if defined(_WIN32)
  FARPROC found = GetProcAddress((HMODULE)library, name);
#else
  void* found = dlsym(library, name);
#endif
  if (found == NULL) {
    fprintf(stderr, "load_at_run_time: there is no %s in the library\n", name);
    return 0;
  }
  const unsigned char* from = (const unsigned char*)&found;
  for (size_t i = 0; i < size; ++i) {
    ((unsigned char*)function)[i] = from[i];
  }
  return 1;
}

int main(int argc, char** argv) {
  const char* (*version)(void);
  const char* (*error_message)(void);
  sarnum_status (*plan_create)(size_t, sarnum_type, sarnum_plan**);
  sarnum_status (*transform)(const sarnum_plan*, sarnum_direction, sarnum_scaling, void*, void*);
  void (*plan_destroy)(sarnum_plan*);

  if (argc != 2) {
    fprintf(stderr, "usage: load_at_run_time LIBRARY\n");
    return 2;
  }
#if defined(_WIN32)
  void* library = (void*)LoadLibraryA(argv[1]);
#else
  void* library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
#endif
  if (library == NULL) {
    fprintf(stderr, "load_at_run_time: cannot load %s\n", argv[1]);
    return 1;
  }
  if (!find(library, "sarnum_version", &version, sizeof version) ||
      !find(library, "sarnum_error_message", &error_message, sizeof error_message) ||
      !find(library, "sarnum_plan_create", &plan_create, sizeof plan_create) ||
      !find(library, "sarnum_transform", &transform, sizeof transform) ||
      !find(library, "sarnum_plan_destroy", &plan_destroy, sizeof plan_destroy)) {
    return 1;
  }

  float line[2 * 8] = {1}; /* an impulse: real and imaginary parts in turn */
  sarnum_plan* plan = NULL;
  if (plan_create(8, SARNUM_FLOAT32, &plan) != SARNUM_OK ||
      transform(plan, SARNUM_FORWARD, SARNUM_UNSCALED, line, NULL) != SARNUM_OK) {
    fprintf(stderr, "load_at_run_time: %s\n", error_message());
    return 1;
  }
  plan_destroy(plan);
  printf("sarnum %s: the spectrum of an impulse is", version());
  for (int k = 0; k < 8; ++k) {
    printf(" %g", (double)line[2 * k]);
  }
  printf("\n");
  return 0;
}
