#include "bench/jobs.h"
void RegisterGrowthJobs()
{
}
