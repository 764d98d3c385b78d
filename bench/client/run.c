#include "run.h"

#include "fail.h"

#include <errno.h>
#include <pthread.h>
#include <stdlib.h>
#include <time.h>

// All callers are ready before the first begins, and all are done before the first cleans up. Each
// looks at the clock itself: on one core nobody else might run at that moment.
struct job
{
    const struct run *run;
    long first;
    long count;
    pthread_barrier_t *barrier;
    pthread_t thread;
    double begin;
    double end;
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
    struct job *const job = data;
    const struct work *const work = job->run->work;
    struct caller caller = {0};
    open_caller(&caller, job->run, job->count);
    if (work->prepare)
        work->prepare(&caller);
    for (long i = 0; i < job->run->warmup; ++i)
        work->perform(&caller, i);
    pthread_barrier_wait(job->barrier);
    job->begin = now();
    for (long i = 0; i < job->count; ++i)
        work->perform(&caller, job->first + i);
    job->end = now();
    pthread_barrier_wait(job->barrier);
    if (work->clean)
        work->clean(&caller);
    close_caller(&caller);
    return NULL;
}

// From the first that began to the last that ended.
static double seconds_of(const struct job *jobs, long count)
{
    double begin = jobs[0].begin;
    double end = jobs[0].end;
    for (long i = 1; i < count; ++i) {
        begin = jobs[i].begin < begin ? jobs[i].begin : begin;
        end = jobs[i].end > end ? jobs[i].end : end;
    }
    return end - begin;
}

double perform_run(const struct run *run)
{
    pthread_barrier_t barrier;
    check(-pthread_barrier_init(&barrier, NULL, (unsigned)run->callers), "a barrier");
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
    for (long i = 0; i < run->callers; ++i)
        pthread_join(jobs[i].thread, NULL);
    pthread_barrier_destroy(&barrier);
    const double seconds = seconds_of(jobs, run->callers);
    free(jobs);
    return seconds;
}
