#!/bin/sh
# The script `start` with stand-ins for the programs that build: what it calls, and from where.    start.sh SOURCE_FOLDER
set -eu
folder=$(mktemp -d)
trap 'chmod -R u+w "$folder"; rm -rf "$folder"' EXIT
chmod 755 "$folder"
mkdir -p "$folder/first/tools" "$folder/bin" "$folder/elsewhere"
cp "$1/start" "$folder/first/"
cp "$1/tools/configure" "$1/tools/install-packages" "$folder/first/tools/"

# No apt-get among the programs; CMake notes how it is called and leaves what it would make.
for program in sh sed dirname readlink cat id mkdir chmod; do ln -s "$(command -v $program)" "$folder/bin/"; done
for program in c++ ninja; do ln -s /bin/true "$folder/bin/$program"; done
cat >"$folder/bin/cmake" <<'STUB'
#!/bin/sh
echo "cmake $*" >&2
mkdir -p build/release
echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" >build/release/CMakeCache.txt
: >build/release/build.ninja
case $* in *"--target quelmar") echo 'echo "engine $*"' >build/release/quelmar && chmod +x build/release/quelmar ;; esac
STUB
chmod +x "$folder/bin/cmake"

# expect WHAT LINES COMMAND...: both outputs, standard output first
expect() {
    what=$1 lines=$2
    shift 2
    (cd "$folder/elsewhere" && PATH=$folder/bin "$@") >"$folder/out" 2>"$folder/err" </dev/null || echo "status $?" >>"$folder/err"
    [ "$(cat "$folder/out" "$folder/err")" = "$lines" ] && return
    echo "start: $what: expected"; echo "$lines"; echo "and got"; cat "$folder/out" "$folder/err"
    exit 1
}
build="cmake --build --preset release --target quelmar"
expect "the first time" "engine a b
cmake --fresh --preset release
$build" ../first/start a b
ln -s ../first/start "$folder/elsewhere/link"
expect "the next time, through a link" "engine 
$build" ./link
mv "$folder/first" "$folder/second"
expect "moved" "engine 
cmake --fresh --preset release
$build" ../second/start
rm "$folder/bin/ninja"
expect "ninja is missing" "Missing, and there is no $([ "$(id -u)" = 0 ] || echo 'sudo with ')apt-get to install it: ninja-build (names of Debian packages)
status 1" ../second/start
chmod -R a-w "$folder/second"
as_user=
[ "$(id -u)" != 0 ] || as_user="$(command -v setpriv) --reuid 65534 --clear-groups"
expect "read-only" "engine 7" $as_user ../second/start 7
