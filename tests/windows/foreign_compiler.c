/* A program for the platform's own ABI, by another compiler than the library's, without a C library: it
 * makes a plan, transforms, and stops a transform by its progress. It ends with the number of the
 * first check that fails, or 0. */
#include <sarnum/c.h>

__declspec(dllimport) void __stdcall ExitProcess(unsigned status);

int _fltused = 0; /* what this ABI looks for where floating-point numbers are used */

enum { samples = 1024, lines = 256 };
static double re[samples], im[samples];
static float image[2 * samples * lines];

static int is_near(double actual, double expected) {
  const double difference = actual - expected;
  return difference < 1e-9 && difference > -1e-9;
}

/* Whether a text begins with another one. */
static int begins(const char* text, const char* with) {
  while (*with != '\0' && *text == *with) {
    ++text;
    ++with;
  }
  return *with == '\0';
}

static int stop_in_the_middle(void* context, double fraction) {
  *(double*)context = fraction;
  return fraction >= 0.5;
}

static unsigned first_failure(void) {
  sarnum_plan* plan = NULL;
  sarnum_plan* of_floats = NULL;
  double stopped_at = 0.0;
  sarnum_options options = SARNUM_OPTIONS_INIT;

  if (sarnum_plan_create(1000, SARNUM_FLOAT64, &plan) != SARNUM_UNSUPPORTED ||
      !begins(sarnum_error_message(), "n is 1000: ") || plan != NULL) {
    return 1;
  }
  if (sarnum_plan_create(samples, SARNUM_FLOAT64, &plan) != SARNUM_OK) {
    return 2;
  }
  re[1] = 1.0;
  if (sarnum_transform(plan, SARNUM_FORWARD, SARNUM_UNSCALED, re, im) != SARNUM_OK ||
      !is_near(re[samples / 2], -1.0) || !is_near(im[samples / 4], -1.0)) {
    return 3;
  }
  if (sarnum_transform(plan, SARNUM_INVERSE, SARNUM_BY_LENGTH, re, im) != SARNUM_OK ||
      !is_near(re[1], 1.0) || !is_near(re[2], 0.0)) {
    return 4;
  }
  if (sarnum_plan_create(samples, SARNUM_FLOAT32, &of_floats) != SARNUM_OK) {
    return 5;
  }
  options.threads = 2;
  if (sarnum_transform_lines(of_floats, SARNUM_FORWARD, SARNUM_UNSCALED, image, NULL, lines, 1,
                             samples, &options) != SARNUM_OK) {
    return 6;
  }
  options.threads = 1;
  options.progress = stop_in_the_middle;
  options.context = &stopped_at;
  if (sarnum_transform_lines(of_floats, SARNUM_FORWARD, SARNUM_UNSCALED, image, NULL, lines, 1,
                             samples, &options) != SARNUM_CANCELLED ||
      stopped_at < 0.5 || stopped_at >= 1.0) {
    return 7;
  }
  sarnum_plan_destroy(of_floats);
  sarnum_plan_destroy(plan);
  return 0;
}

void entry(void) {
  ExitProcess(first_failure());
}
