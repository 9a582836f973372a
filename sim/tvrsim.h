/* Control of the simulated adapters, beside the HBA API and RM entry points that libtvrsim exports.
 *
 * The library plays the adapter maker's RM library, the HBA API library and an HBA API vendor
 * library at once. It starts from a scenario: the JSON file that the environment variable
 * TVRSIM_SCENARIO names, or a built-in host of two boards with two ports each. docs/scenario.md
 * tells the format. A scenario that cannot be used is told in one line on standard error; the
 * library then has no adapters and LRM_InitLib fails.
 *
 * Every function may be called from any thread at any time.
 */
#ifndef TVRSIM_H
#define TVRSIM_H

#include <stddef.h>
#include <stdint.h>

#ifndef TVRSIM_API
#define TVRSIM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Changes the running simulation by a JSON object, all of it or nothing:
 *
 *   "scenario"     a whole scenario in place of the present one; handles in use become invalid
 *   "adapters"     object of adapter name and the adapter fields to change
 *   "ports"        object of WWPN and the port fields to change
 *   "globalDriverParameters"  the parameters of the driver to change
 *   "reboot"       true starts the host again, behind the changes above: what waits for a reset
 *                  or a reboot takes effect, temporary driver parameters end
 *   "powerCycle"   true does the same and ends volatile world wide names
 *   "linkEvents"   an event of a port for those who registered for it, behind the changes above, or
 *                  an array of them: "port" its WWPN, "type" "offline", "online" or a number,
 *                  "times" how many, "alternate" true when offline and online take turns
 *   "clear"        true drops all rules of entry points
 *   "entryPoints"  rules as in a scenario; those of a named entry point replace its present ones
 *   "resetCounts"  true sets all call counts to 0
 *
 * Returns 0, or -1 when the request is malformed or names what does not exist; message, unless
 * null, then gets one line of at most messageSize - 1 characters that tells where and why. */
TVRSIM_API int tvrsim_control(const char* request, char* message, size_t messageSize);

/* Whether a scenario file can be used: 0, or -1, with the line in message as above. The running
 * simulation stays as it is. */
TVRSIM_API int tvrsim_check(const char* file, char* message, size_t messageSize);

/* How often an entry point was called, by its exact exported name ("LRM_GetPortStatistics" and
 * "RM_GetPortStatistics" count apart). The name "*" gives the sum over all. -1 for a name that is
 * no entry point. */
TVRSIM_API int64_t tvrsim_calls(const char* entryPoint);

/* Adapter handles that were opened and not closed. */
TVRSIM_API uint32_t tvrsim_open_handles(void);

typedef int (*tvrsim_control_fn)(const char* request, char* message, size_t messageSize);
typedef int (*tvrsim_check_fn)(const char* file, char* message, size_t messageSize);
typedef int64_t (*tvrsim_calls_fn)(const char* entryPoint);
typedef uint32_t (*tvrsim_open_handles_fn)(void);

#ifdef __cplusplus
}
#endif

#endif
