/* spectrum: finds a tone in a line of samples, in plain C.
 *
 * Every function that can fail returns a status; the message says which argument was wrong and what
 * to do about it. */
#include <math.h>
#include <sarnum/c.h>
#include <stdio.h>
#include <stdlib.h>

enum { samples = 1024 };

static void check(sarnum_status status) {
  if (status != SARNUM_OK) {
    fprintf(stderr, "spectrum: %s\n", sarnum_error_message());
    exit(1);
  }
}

int main(void) {
  static double re[samples], im[samples];
  for (int i = 0; i < samples; ++i) {
    re[i] = cos(2.0 * 3.14159265358979323846 * 37.0 * i / samples);
  }

  sarnum_plan* plan = NULL; /* one for each length; as many transforms and threads as you like */
  check(sarnum_plan_create(samples, SARNUM_FLOAT64, &plan));
  check(sarnum_transform(plan, SARNUM_FORWARD, SARNUM_UNSCALED, re, im));

  int peak = 0;
  for (int k = 1; k < samples / 2; ++k) {
    if (hypot(re[k], im[k]) > hypot(re[peak], im[peak])) {
      peak = k;
    }
  }
  printf("strongest at bin %d, magnitude %.0f\n", peak, hypot(re[peak], im[peak]));

  check(sarnum_transform(plan, SARNUM_INVERSE, SARNUM_BY_LENGTH, re, im));
  printf("and back: sample 0 is %.3f\n", re[0]);
  sarnum_plan_destroy(plan);
  return 0;
}
