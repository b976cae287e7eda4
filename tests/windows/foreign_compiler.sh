#!/bin/sh
# foreign_compiler.sh BIN_DIR IMPORT_LIBRARY INCLUDE_DIR WORK_DIR EMULATOR...: a program for the platform's
# own ABI, by that platform's kind of compiler and linker, uses the library through its import library.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
bin=$1 import_library=$2 include_dir=$3 work=$4
shift 4

for tool in clang lld-link llvm-dlltool; do
  command -v "$tool" >/dev/null 2>&1 || { echo "no $tool here"; exit 77; }
done
rm -rf "$work"
mkdir -p "$work"
cp "$bin"/*.dll "$import_library" "$work"
cd "$work"
clang --target=x86_64-pc-windows-msvc -std=c99 -O1 -ffreestanding -Wall -Wextra -Wconversion -Werror \
  -I"$include_dir" -c "$here/foreign_compiler.c" -o program.obj
printf 'LIBRARY kernel32.dll\nEXPORTS\nExitProcess\n' >kernel32.def
llvm-dlltool -m i386:x86-64 -d kernel32.def -l kernel32.lib
lld-link /nologo /entry:entry /subsystem:console /nodefaultlib /out:program.exe program.obj \
  "$(basename "$import_library")" kernel32.lib
"$@" ./program.exe
cd /
rm -rf "$work"
