/* Loaded before a program, steps its clock of the day and nobody else's: each question for it is
   answered with the offset, in seconds, that stands at the beginning of the file that SIEGE_CLOCK
   names. A moment of that clock that the program waits for is brought back to the machine's before
   the system hears of it. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

/* Elapsed time never comes so far; the clock of the day was past it in 1980. */
static const time_t kLeastDate = 315532800;
static const volatile int64_t* s_offset;

/* Waits may begin before this has run. */
__attribute__((constructor)) static void MapOffset(void) {
    const char* path = getenv("SIEGE_CLOCK");
    const int file = path ? open(path, O_RDONLY | O_CLOEXEC) : -1;
    if (file < 0) return;
    void* page = mmap(NULL, sizeof(int64_t), PROT_READ, MAP_SHARED, file, 0);
    if (page != MAP_FAILED) s_offset = page;
    close(file);
}

static int64_t Offset(void) {
    return s_offset ? *s_offset : 0;
}

static int IsOfTheDay(clockid_t clock) {
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
}

static struct timespec OfTheMachine(const struct timespec* moment) {
    struct timespec real = *moment;
    if (real.tv_sec > kLeastDate) real.tv_sec -= Offset();
    return real;
}

int clock_gettime(clockid_t clock, struct timespec* now) {
    static int (*next)(clockid_t, struct timespec*);
    if (!next) next = (int (*)(clockid_t, struct timespec*))dlsym(RTLD_NEXT, "clock_gettime");
    const int result = next(clock, now);
    if (result == 0 && IsOfTheDay(clock)) now->tv_sec += Offset();
    return result;
}

int gettimeofday(struct timeval* restrict now, void* restrict zone) {
    struct timespec moment;
    (void)zone;
    clock_gettime(CLOCK_REALTIME, &moment);
    now->tv_sec = moment.tv_sec;
    now->tv_usec = moment.tv_nsec / 1000;
    return 0;
}

time_t time(time_t* kept) {
    struct timespec moment;
    clock_gettime(CLOCK_REALTIME_COARSE, &moment);
    if (kept) *kept = moment.tv_sec;
    return moment.tv_sec;
}

int pthread_cond_timedwait(pthread_cond_t* restrict condition, pthread_mutex_t* restrict mutex,
                           const struct timespec* restrict end) {
    static int (*next)(pthread_cond_t*, pthread_mutex_t*, const struct timespec*);
    if (!next) {
        next = (int (*)(pthread_cond_t*, pthread_mutex_t*, const struct timespec*))dlsym(
            RTLD_NEXT, "pthread_cond_timedwait");
    }
    const struct timespec real = OfTheMachine(end);
    return next(condition, mutex, &real);
}

int pthread_mutex_timedlock(pthread_mutex_t* restrict mutex, const struct timespec* restrict end) {
    static int (*next)(pthread_mutex_t*, const struct timespec*);
    if (!next) {
        next = (int (*)(pthread_mutex_t*, const struct timespec*))dlsym(RTLD_NEXT,
                                                                        "pthread_mutex_timedlock");
    }
    const struct timespec real = OfTheMachine(end);
    return next(mutex, &real);
}

/* Libraries wait on futexes by themselves. */
long syscall(long number, ...) {
    static long (*next)(long, ...);
    if (!next) next = (long (*)(long, ...))dlsym(RTLD_NEXT, "syscall");
    va_list rest;
    va_start(rest, number);
    long a[6];
    for (int i = 0; i < 6; ++i) a[i] = va_arg(rest, long);
    va_end(rest);
    struct timespec real;
    if (number == SYS_futex && (a[1] & FUTEX_CLOCK_REALTIME) && a[3]) {
        real = OfTheMachine((const struct timespec*)a[3]);
        a[3] = (long)&real;
    }
    return next(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}
