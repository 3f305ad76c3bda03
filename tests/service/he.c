/* he.c - stands in for the request tool where a test wants a daemon that does one simple thing. The
 * interface that it is asked for says what:
 *   wait   nothing, until a signal ends it
 *   end    ends at once
 *   tell   writes what it was given to /tmp/told and ends */
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

static void tell_descriptors(FILE* file) {
  for (int fd = 0; fd < 1024; ++fd) {
    char link[64], target[512];
    if (fd == fileno(file) || fcntl(fd, F_GETFD) < 0) continue;
    snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t length = readlink(link, target, sizeof target - 1);
    target[length < 0 ? 0 : length] = '\0';
    fprintf(file, "descriptor %s\n", target);
  }
}

static void tell_signals(FILE* file) {
  sigset_t blocked;
  sigprocmask(SIG_SETMASK, NULL, &blocked);
  for (int number = 1; number < 32; ++number) {
    struct sigaction action;
    if (sigismember(&blocked, number) == 1) fprintf(file, "blocked %d\n", number);
    if (sigaction(number, NULL, &action) == 0 && action.sa_handler == SIG_IGN)
      fprintf(file, "ignored %d\n", number);
  }
}

static int tell(int argc, char** argv) {
  char folder[256] = "";
  FILE* file = fopen("/tmp/told", "we");
  if (!file) return 1;
  for (int i = 0; i < argc; ++i) fprintf(file, "argument %s\n", argv[i]);
  fprintf(file, "leads its session: %s\n", getsid(0) == getpid() ? "yes" : "no");
  fprintf(file, "folder %s\n", getcwd(folder, sizeof folder));
  tell_descriptors(file);
  tell_signals(file);
  return fclose(file) == 0 ? 0 : 1;
}

int main(int argc, char** argv) {
  const char* interface = argc > 1 ? strchr(argv[1], '.') : NULL;
  if (!interface) return 2;
  if (strncmp(interface, ".end", 4) == 0) return 0;
  if (strncmp(interface, ".tell", 5) == 0) return tell(argc, argv);
  for (;;) pause();
}
