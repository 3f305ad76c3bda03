#!/bin/sh
# abi.sh SOURCE-FOLDER COMPILER...: names, prototypes, constants and records are the recorded ones. Says what to do when
# they are not.
set -eu
source=$1
shift
mkdir -p /tmp/abi.now
cd /tmp/abi.now
"$source/abi/describe" "$source/include" "$source/cmake/fairlead.map" "$@"

status=0
for file in *; do
  [ -s "$file" ] || { echo "nothing found: $file"; status=1; }
  diff -U2 --label "abi/$file as recorded" --label "abi/$file as the headers have it" "$source/abi/$file" "$file" || status=1
done
[ $status = 0 ] || cat <<'END'

What compiled programs and adapters rely on has changed. If that was not meant, take the change back. If it was:
  something added    list new names in a version node of their own in cmake/fairlead.map (FAIRLEAD_1.1, based on the
                     last one) when the last node has been released, and raise the minor version in CMakeLists.txt.
  anything else      old programs break: raise the major version in CMakeLists.txt, which is the soname, and rename the
                     version node; packages get the new number in their names.
Then run tools/abi-update and commit what it wrote in abi/ together with the change. abi/README.md tells more.
END
exit $status
