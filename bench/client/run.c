#include "run.h"

#include "fail.h"

#include <errno.h>
#include <pthread.h>
#include <stdlib.h>
#include <time.h>

// All callers are ready before the first begins, and all are done before the last cleans up.
struct job
{
    const struct run *run;
    long first;
    long count;
    pthread_barrier_t *barrier;
    pthread_t thread;
};

double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

static void open_caller(struct caller *caller, const struct run *run, long count)
{
    caller->rows = run->rows;
    caller->made = calloc((size_t)(run->warmup + count), sizeof *caller->made);
    if (!caller->made)
        fail("remembering what was made", -ENOMEM);
    check(sd_bus_open_system(&caller->bus), "reaching the bus");
}

static void close_caller(struct caller *caller)
{
    sd_bus_flush_close_unref(caller->bus);
    free(caller->made);
}

static void *do_job(void *data)
{
    const struct job *const job = data;
    const struct work *const work = job->run->work;
    struct caller caller = {0};
    open_caller(&caller, job->run, job->count);
    if (work->prepare)
        work->prepare(&caller);
    for (long i = 0; i < job->run->warmup; ++i)
        work->perform(&caller, i);
    pthread_barrier_wait(job->barrier);
    for (long i = 0; i < job->count; ++i)
        work->perform(&caller, job->first + i);
    pthread_barrier_wait(job->barrier);
    if (work->clean)
        work->clean(&caller);
    close_caller(&caller);
    return NULL;
}

double perform_run(const struct run *run)
{
    pthread_barrier_t barrier;
    check(-pthread_barrier_init(&barrier, NULL, (unsigned)run->callers + 1), "a barrier");
    struct job *const jobs = calloc((size_t)run->callers, sizeof *jobs);
    if (!jobs)
        fail("making the callers", -ENOMEM);
    long first = run->warmup;
    for (long i = 0; i < run->callers; ++i) {
        const long count = run->count / run->callers + (i < run->count % run->callers ? 1 : 0);
        jobs[i] = (struct job){.run = run, .first = first, .count = count, .barrier = &barrier};
        check(-pthread_create(&jobs[i].thread, NULL, do_job, &jobs[i]), "a thread for a caller");
        first += count;
    }
    pthread_barrier_wait(&barrier);
    const double start = now();
    pthread_barrier_wait(&barrier);
    const double seconds = now() - start;
    for (long i = 0; i < run->callers; ++i)
        pthread_join(jobs[i].thread, NULL);
    pthread_barrier_destroy(&barrier);
    free(jobs);
    return seconds;
}
