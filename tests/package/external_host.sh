#!/bin/sh
# external_host.sh SOURCE_DIR WORK_DIR COMPILER GENERATOR: a host of one's own is refused when its header
# or library does not exist, and does not compile when it lacks something that the library uses. (With
# a complete one: docs/embedding.md, see tests/docs.)
set -eu
source_dir=$1 work=$2 compiler=$3 generator=$4

rm -rf "$work"
mkdir -p "$work/host" "$work/include/sarnum"
echo "#define SARNUM_HOST_HEADER <own_host.h>" >"$work/include/sarnum/config.h"
header="$source_dir/examples/own_host/own_host.h"
library="$work/libown_host.so"
cp "$header" "$work/host"
: >"$library"

while IFS='|' read -r header_name library_name complaint; do
  status=0
  cmake -S "$source_dir" -B "$work/build" -G "$generator" -DCMAKE_CXX_COMPILER="$compiler" \
    -DSARNUM_HOST=external -DSARNUM_HOST_INCLUDE_DIR="$work/host" \
    -DSARNUM_HOST_HEADER="$header_name" -DSARNUM_HOST_LIBRARY="$library_name" \
    >"$work/log" 2>&1 || status=$?
  if [ $((status == 0)) != $((${#complaint} == 0)) ] ||
    ! tr -s '\n ' ' ' <"$work/log" | grep -qF "$complaint"; then
    cat "$work/log"
    echo "status $status with the header '$header_name' and the library '$library_name'" >&2
    exit 1
  fi
done <<END
no_host.h|$library|There is no header 'no_host.h'
own_host.h|$work/libno_host.so|There is no library '$work/libno_host.so'
own_host.h|no_host|There is no library 'no_host'
own_host.h|$library|
END

compiles() {
  "$compiler" -std=c++20 -fsyntax-only -I"$work/host" -I"$work/include" -I"$source_dir/include" \
    -x c++ "$1" 2>"$work/log"
}
interface="$source_dir/src/host/required_interface.cpp"
compiles "$interface" || { cat "$work/log"; exit 1; }
while read -r change; do
  sed "$change" "$header" >"$work/host/own_host.h"
  compiles "$work/host/own_host.h" || { cat "$work/log"; exit 1; }
  if cmp -s "$header" "$work/host/own_host.h" || compiles "$interface"; then
    echo "changes nothing, or passes for a whole host: $change" >&2
    exit 1
  fi
done <<'END'
s/operator const char\*/operator const void*/
s/CString operator+.*/int operator+(const char*) const { return 0; }/
s/CString GetResourceString/std::string GetResourceString/
s/virtual void StepIt/void StepIt/; s/StepIt() override/StepIt()/
s/virtual int SetStep.*/virtual void SetStep(int) {}/
s/SetRange(int [^ ]*, int /SetRange(int, long /
s/explicit CFileLayer(CMeterInfoBase\*/explicit CFileLayer(CMeterInfo*/
s/int Open(const char\* path, unsigned long/int Open(const char* path, unsigned short/
s/ExtraTag\* extra/void* extra/
s/int Width()/short Width()/
s/void\* GetRowAddr(int/void* GetRowAddr(short/
s/int WriteRow(void/int WriteRow(const void/
s/int ShiftBlock(int, int)/int ShiftBlock(int)/
s/void Close/int Close/
s/void attach_extension_module(ExtensionModule& module) noexcept/void attach_extension_module(ExtensionModule\& module)/
END

rm -rf "$work"
