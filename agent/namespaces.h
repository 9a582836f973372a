// The two namespaces in which the provider's instances live.
#ifndef TVR_AGENT_NAMESPACES_H
#define TVR_AGENT_NAMESPACES_H

namespace cimple {

// Of all instances but those of profile registration.
inline constexpr char implementation_namespace[] = "root/tavrin";

// Of registered and referenced profiles, and where the server's own profiles are looked for.
inline constexpr char interop_namespace[] = "root/pg_interop";

} // namespace cimple

#endif
