#!/bin/sh
# writes_everywhere.sh NAME: makes a file of this name wherever the private root lets it, and says where.
for folder in / /etc /etc/config /prj /tmp /tmp/.var /dev /usr /usr/lib /var /var/tmp /var/lib /home /root /opt /srv /run; do
  { echo private >"$folder/$1"; } 2>/dev/null && echo "$folder"
done
exit 0
