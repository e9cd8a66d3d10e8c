# Checks of the krvalue tool's conventions: where results and messages go,
# exit statuses, number printing, --json, --lines, --version and the limits.
# Included from tools/CMakeLists.txt when tests are built; the checks run in
# the tool's build directory.
set(KR_CHECK_TOOL ${CMAKE_CURRENT_LIST_DIR}/check_tool.cmake)

# kr_tool_check(<name> ARGUMENTS <args...> STATUS <n> [OUTPUT <regex>]
#               [ERRORS <regex>] [INPUT <text>] [OUTPUT_FILE <path>]
#               [FILE <path> FILE_START <regex> [FILE_MATCHES <regex>]
#                [FILE_LACKS <regex>]])
# INPUT is given on standard input; OUTPUT_FILE takes standard output; FILE
# is a file the tool writes, whose start must match FILE_START; FILE_MATCHES
# must match somewhere in it, FILE_LACKS nowhere.
function(kr_tool_check name)
  cmake_parse_arguments(ARG ""
    "STATUS;OUTPUT;ERRORS;INPUT;OUTPUT_FILE;FILE;FILE_START;FILE_MATCHES;FILE_LACKS"
    "ARGUMENTS" ${ARGN})
  set(options)
  if(DEFINED ARG_FILE)
    list(APPEND options -DFILE=${ARG_FILE} "-DFILE_START=${ARG_FILE_START}")
  endif()
  foreach(check FILE_MATCHES FILE_LACKS)
    if(DEFINED ARG_${check})
      list(APPEND options "-D${check}=${ARG_${check}}")
    endif()
  endforeach()
  if(DEFINED ARG_ERRORS)
    list(APPEND options "-DERRORS=${ARG_ERRORS}")
  endif()
  if(DEFINED ARG_INPUT)
    set(input ${CMAKE_CURRENT_BINARY_DIR}/${name}.input)
    file(WRITE ${input} "${ARG_INPUT}")
    list(APPEND options -DINPUT_FILE=${input})
  endif()
  if(DEFINED ARG_OUTPUT_FILE)
    list(APPEND options -DOUTPUT_FILE=${ARG_OUTPUT_FILE})
  endif()
  string(REPLACE ";" "$<SEMICOLON>" arguments "${ARG_ARGUMENTS}")
  add_test(NAME ${name}
    COMMAND ${CMAKE_COMMAND} -DTOOL=$<TARGET_FILE:krvalueutils_tool> "-DARGUMENTS=${arguments}"
      -DSTATUS=${ARG_STATUS} "-DOUTPUT=${ARG_OUTPUT}" ${options}
      -P ${KR_CHECK_TOOL})
endfunction()

kr_tool_check(krvalue_version
  ARGUMENTS --version
  STATUS 0
  OUTPUT "^krvalue [0-9]+\\.[0-9]+\\.[0-9]+\n$")

# Results on standard output, every message on standard error.
kr_tool_check(krvalue_library_message_on_stderr
  ARGUMENTS read float "\"a\"" --name speed --field x
  STATUS 1
  OUTPUT "^$"
  ERRORS "^speed x: Expected a float\nkrvalue: at the whole value\n$")
kr_tool_check(krvalue_trailing_bytes_are_unusable_input
  ARGUMENTS read floats "[1, 2, 3] x"
  STATUS 2
  OUTPUT "^$"
  ERRORS "^krvalue: KRValue text: syntax error at line 1, column 11 \\(offset 10\\): invalid literal; last read: '3\\] x'; expected end of input\n$")
kr_tool_check(krvalue_write_failure
  ARGUMENTS read float 1
  OUTPUT_FILE /dev/full
  STATUS 3
  ERRORS "^krvalue: cannot write the output: No space left on device\n$")
kr_tool_check(krvalue_count_beyond_the_limit
  ARGUMENTS read bools true --count 4000000000
  STATUS 2
  OUTPUT "^$"
  ERRORS "^krvalue: --count 4000000000 is more bools than the tool prints \\(at most 10000000\\)\n$")
kr_tool_check(krvalue_duration_wraps_with_a_warning
  ARGUMENTS write duration 3000000000000000000
  STATUS 0
  OUTPUT "^\\[-1294967296, 0\\]\n$"
  ERRORS "^krvalue: warning: 3000000000000000000 ns is 3000000000 s, outside the seconds' int range \\[-2147483648, 2147483647\\]; the seconds written wrap to -1294967296\n$")

# Every number as the shortest text that reads back to the same float.
kr_tool_check(krvalue_numbers_exact
  ARGUMENTS read pose2ds "[[1639.205, 0, 123456.789], [0.1, -1e-45, 3.4028235e38]]"
  STATUS 0
  OUTPUT "^0: Pose2D\\(x=1639\\.205, y=0, theta=123456\\.79\\)\n1: Pose2D\\(x=0\\.1, y=-1e-45, theta=3\\.4028235e\\+38\\)\n$")
kr_tool_check(krvalue_json
  ARGUMENTS read pose2ds "[[1639.205, 0, 123456.789]]" --json
  STATUS 0
  OUTPUT "^\\[\\[1639\\.205, 0\\.0, 123456\\.79\\]\\]\n$")
# The non-finite floats read and written as the text form's words.
kr_tool_check(krvalue_json_non_finite
  ARGUMENTS read floats "[NaN, -Infinity, Infinity, -0.0]" --json
  STATUS 0
  OUTPUT "^\\[NaN, -Infinity, Infinity, -0\\.0\\]\n$")
# A long bad line gives an error line of bounded length: its end quoted.
# (No unmatched '[' in a check's arguments: CMake would join list items.)
string(REPEAT "x" 100000 long_line)
string(REPEAT "x" 40 quoted_end)
kr_tool_check(krvalue_lines_long_error
  ARGUMENTS read floats --lines
  INPUT "\"${long_line}\n"
  STATUS 2
  OUTPUT "^{\"error\": \"KRValue text: syntax error at line 1, column 100002 \\(offset 100001\\): invalid string: missing closing quote; last read: '\\.\\.\\.${quoted_end}'\", \"status\": 2}\n$")

# One line out per line in; the status is the worst of the lines'.
kr_tool_check(krvalue_lines
  ARGUMENTS read pose2d --lines
  INPUT "[1, 2, 3]\n[1, 2]\n[1, 2, 3] x\n"
  STATUS 2
  OUTPUT "^\\[1\\.0, 2\\.0, 3\\.0\\]\n{\"error\": \"KRMotion: value Pose2D is not valid\\. It has to be \\[x, y, theta\\]\\.\", \"status\": 1, \"path\": \\[\\]}\n{\"error\": \"KRValue text: syntax error at line 1, column 11 \\(offset 10\\): invalid literal; last read: '3\\] x'; expected end of input\", \"status\": 2}\n$"
  ERRORS "^$")

# Where a reader failed: a second line on standard error, a "path" in --lines.
kr_tool_check(krvalue_failure_located
  ARGUMENTS read pose2ds "[[1, 2, 3], [4, \"y\", 6]]" --name waypoints
  STATUS 1
  OUTPUT "^$"
  ERRORS "^waypoints y: Expected a float\nkrvalue: at \\[1\\]\\[1\\]\n$")
kr_tool_check(krvalue_lines_located
  ARGUMENTS read position3ds --lines
  INPUT "[[1, 2, 3], [4, 5, 6], [7, 8, null]]\n"
  STATUS 1
  OUTPUT "^{\"error\": \"value z: Expected a float but found an invalid KRValue\", \"status\": 1, \"path\": \\[2, 2\\]}\n$")
kr_tool_check(krvalue_path_located
  ARGUMENTS path "[\"Composed\", [\"Line\", [1, 0]], [\"Circle\", [0, \"r\"], 1]]" --name p
  STATUS 1
  OUTPUT "^$"
  ERRORS "^p y: Expected a float\nkrvalue: at \\[2\\]\\[1\\]\\[1\\]\n$")
# check: every bad element of a list, one line each, then a summary.
kr_tool_check(krvalue_check_lists_every_bad_element
  ARGUMENTS check pose2ds "[[1, 2, 3], [4, \"y\", 6], [1, 2], [7, 8, 9]]" --name waypoints
  STATUS 1
  OUTPUT "^\\[1\\]\\[1\\]: waypoints y: Expected a float\n\\[2\\]: KRMotion: waypoints Pose2D is not valid\\. It has to be \\[x, y, theta\\]\\.\n2 failures in 4 elements\n$"
  ERRORS "^$")
kr_tool_check(krvalue_check_whole_value
  ARGUMENTS check support-sequences "[[\"a\", [], []], [\"a\", [], []]]"
  STATUS 1
  OUTPUT "^\\[1\\]\\[0\\]: KRMotion: value At least two support sequences containt the same name\\.\n1 failure in 2 elements\n$")
kr_tool_check(krvalue_check_ok
  ARGUMENTS check floats "[1, 2.5]"
  STATUS 0
  OUTPUT "^ok: floats accepts the value\n$")

# A reader of the output that goes away: status 3 at once, no message.
# 100,000 lines of output fill the pipe long after `head` has read its line.
add_test(NAME krvalue_closed_pipe_ends_quietly
  COMMAND bash -c [=[
    yes '[1, 2, 3]' | head -n 100000 | "$0" read pose2d --lines 2>"$1" | head -n 1 >/dev/null
    status=${PIPESTATUS[2]}
    [ "$status" = 3 ] && [ ! -s "$1" ] || { echo "status $status, stderr:"; cat "$1"; exit 1; }
  ]=] $<TARGET_FILE:krvalueutils_tool> ${CMAKE_CURRENT_BINARY_DIR}/closed_pipe.stderr)

# Paths and trajectories.
kr_tool_check(krvalue_path_length
  ARGUMENTS path "[\"Line\", [3.0, 4.0]]"
  STATUS 0
  OUTPUT "^length: 5\nend: Pose2D\\(x=3, y=4, theta=0\\.9272952\\)\ns=0: ")
kr_tool_check(krvalue_path_invalid
  ARGUMENTS path "[\"Line\", [1, 2], 3]" --name p
  STATUS 1
  OUTPUT "^$")
kr_tool_check(krvalue_path_svg
  ARGUMENTS path "[\"Circle\", [0.0, 1.0], 3.1415927]"
    --svg ${CMAKE_CURRENT_BINARY_DIR}/krvalue_path_svg.svg
  STATUS 0
  OUTPUT "^length: 3\\.1415927\n"
  FILE ${CMAKE_CURRENT_BINARY_DIR}/krvalue_path_svg.svg
  FILE_START "<\\?xml|<svg")
# The calls made before a failing piece show above the message.
kr_tool_check(krvalue_path_factory_partial
  ARGUMENTS path "[\"Composed\", [\"Line\", [1, 0]], [\"Circle\", [0, 1]]]" --factory --name p
  STATUS 1
  OUTPUT "^addLine\\(Position2D\\(x=1, y=0\\)\\)\n$")
kr_tool_check(krvalue_trajectory_bad_start
  ARGUMENTS trajectory "[\"NonHolonomic\", [\"Line\", [1.0, 0.0]], 0.0]" --start 1,2
  STATUS 2
  OUTPUT "^$")

# --blend: the factories' tolerance. A value they refuse is the library's
# failure, with its message; one that is no number is unusable input.
set(line_arc_line "[\"Composed\", [\"Line\", [1, 0]], [\"Circle\", [0, 1], 1.5707964], [\"Line\", [1, 0]]]")
kr_tool_check(krvalue_trajectory_blend_negative
  ARGUMENTS trajectory "[\"NonHolonomic\", ${line_arc_line}, 0]" --blend -1
  STATUS 1
  OUTPUT "^$"
  ERRORS "^A trajectory factory's blend tolerance must be finite and not negative, got -1\\.000000\\.\nkrvalue: at the whole value\n$")
kr_tool_check(krvalue_trajectory_blend_nan
  ARGUMENTS trajectory "[\"Composed\", [\"NonHolonomic\", ${line_arc_line}, 0]]" --blend nan
  STATUS 1
  OUTPUT "^$"
  ERRORS "^A trajectory factory's blend tolerance must be finite and not negative, got nan\\.\n")
kr_tool_check(krvalue_trajectory_blend_not_a_number
  ARGUMENTS trajectory "[\"NonHolonomic\", ${line_arc_line}, 0]" --blend 1cm
  STATUS 2
  OUTPUT "^$")
# Blended, the picture shows the path as described (dashed) over the driven
# track, and says which is which; without a blend it has the track alone.
kr_tool_check(krvalue_trajectory_blend_svg
  ARGUMENTS trajectory "[\"NonHolonomic\", ${line_arc_line}, 0]" --blend 0.05
    --svg ${CMAKE_CURRENT_BINARY_DIR}/krvalue_trajectory_blend.svg
  STATUS 0
  OUTPUT "^duration: "
  FILE ${CMAKE_CURRENT_BINARY_DIR}/krvalue_trajectory_blend.svg
  FILE_START "<\\?xml"
  FILE_MATCHES "<polyline points=\"[^\"]+\" fill=\"none\" stroke=\"#1f77b4\" stroke-width=\"2\\.5\".*<polyline points=\"[^\"]+\" fill=\"none\" stroke=\"#555555\" stroke-width=\"1\\.2\" stroke-dasharray=\"5 4\"/>.*>path as described, dashed<.*>path driven, blend tolerance 0\\.05 m<")
kr_tool_check(krvalue_trajectory_svg_without_blend
  ARGUMENTS trajectory "[\"NonHolonomic\", ${line_arc_line}, 0]"
    --svg ${CMAKE_CURRENT_BINARY_DIR}/krvalue_trajectory_exact.svg
  STATUS 0
  OUTPUT "^duration: "
  FILE ${CMAKE_CURRENT_BINARY_DIR}/krvalue_trajectory_exact.svg
  FILE_START "<\\?xml"
  FILE_MATCHES "stroke=\"#1f77b4\" stroke-width=\"2\\.5\""
  FILE_LACKS "#555555|described|blend")
# A base facing along the path drives a line, an arc and a line faster
# through blends, and elsewhere in between; it starts and ends where it did
# without them. Any kind of reader gives the same; a tolerance of -0 is none.
add_test(NAME krvalue_trajectory_blend_is_faster
  COMMAND bash -c [=[
    set -e
    description="[\"NonHolonomic\", $1, 0]"
    "$0" trajectory "$description" >"$2.exact"
    "$0" trajectory "$description" --blend -0 | cmp - "$2.exact"
    "$0" trajectory "$description" --blend 0.05 >"$2.blended"
    "$0" trajectory "[\"Composed\", $description]" --kind composed --blend 0.05 \
      | cmp - "$2.blended"
    seconds() { sed -n '1s/^duration: \([0-9.]*\) s.*/\1/p' "$1"; }
    exact=$(seconds "$2.exact") blended=$(seconds "$2.blended")
    awk -v a="$blended" -v b="$exact" 'BEGIN { exit !(a > 0 && a < b) }' \
      || { echo "blended $blended s, exact $exact s"; exit 1; }
    positions() { sed -n 's/^t=[^:]*: position \(([^)]*)\).*/\1/p' "$1"; }
    paste -d'|' <(positions "$2.exact") <(positions "$2.blended") | awk -F'|' '
      NR == 1 || NR == 9 { if ($1 != $2) { print "sample " NR ": " $0; bad = 1 } }
      NR > 1 && NR < 9 && $1 != $2 { moved++ }
      END { if (!moved) print "no sample moved"; exit bad || !moved || NR != 9 }'
  ]=] $<TARGET_FILE:krvalueutils_tool> "${line_arc_line}"
    ${CMAKE_CURRENT_BINARY_DIR}/krvalue_trajectory_blend)

# The schemas: one reader's, or all of them; never both, never an unknown one.
kr_tool_check(krvalue_schema_of_a_reader
  ARGUMENTS schema pose2ds
  STATUS 0
  OUTPUT "^{\n  \"\\$schema\": \"https://json-schema.org/draft/2020-12/schema\",\n  \"\\$id\": \"urn:krvalueutils:schema:pose2ds\",\n")
kr_tool_check(krvalue_schema_bundle
  ARGUMENTS schema --all
  STATUS 0
  OUTPUT "\"\\$id\": \"urn:krvalueutils:schema\",.*\n    \"trajectory\": {\n")
kr_tool_check(krvalue_schema_unknown
  ARGUMENTS schema pose3d
  STATUS 2
  OUTPUT "^$"
  ERRORS "^krvalue: no schema for 'pose3d' \\(see: krvalue list\\)\n$")
kr_tool_check(krvalue_schema_reader_and_all
  ARGUMENTS schema pose2ds --all
  STATUS 2
  OUTPUT "^$"
  ERRORS "^krvalue: give either READER or --all\n$")
