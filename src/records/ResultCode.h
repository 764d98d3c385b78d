#pragma once

/// The results of operations and statements, other than ids. All failures are negative, so that
/// they differ from the ids of new rows.
namespace ResultCode {
constexpr int Success = 0;
constexpr int KeysFull = -1;  ///< no new key, because the limit "ProgKeysMax" is reached
constexpr int Refused = -2;   ///< unknown or protected key or action, or a key was not inserted
constexpr int NoSuchRow = -2; ///< an update or deletion by id that matched no row
constexpr int Failed = -3;    ///< the statement failed; the log has the reason
} // namespace ResultCode
