# For script/check-media, which sources it: how each medium is made, mounted as by one machine or by
# two, and copied as if it had been pulled out. Uses $work, a folder for images, backing folders and
# mounts, and $repository.
#
# A medium is an image of a disk or a folder behind a server. Its two machines have host names and,
# if it is on a network, server addresses of their own: with one of them, the kernel would give both
# mounts the same cache and the same owner of locks.

host_media=(ext4 exfat-fuse ntfs-3g sshfs bindfs)   # the kernel of the machine can mount these
guest_media=(vfat nfs4.2 nfs3 smb smb-nobrl)        # these are mounted in user-mode Linux
network_media=(nfs4.2 nfs3 smb smb-nobrl sshfs bindfs)

has_image() {
  case $1 in ext4 | vfat | exfat-fuse | ntfs-3g) ;; *) return 1 ;; esac
}

# Makes an empty image at a path.
make_image() {
  truncate -s 64M "$2"
  case $1 in
    ext4) mkfs.ext4 -q "$2" ;;
    vfat) mkfs.vfat "$2" >/dev/null ;;
    exfat-fuse) mkfs.exfat "$2" >/dev/null ;;
    ntfs-3g) mkfs.ntfs -q -F "$2" >/dev/null 2>&1 ;;
  esac
}

mount_image() {
  mount -o loop -t "$1" "$2" "$3" >/dev/null 2>&1 && { [ ! -d "$3/lost+found" ] || rmdir "$3/lost+found"; }
}

# Mounts a folder's server as the machine 1 or 2.
mount_folder() {
  local medium=$1 machine=$2 mount=$3
  local address=127.0.0.$machine
  case $medium in
    nfs4.2) mount -t nfs -o vers=4.2 "$address:/" "$mount" ;;
    nfs3) mount -t nfs -o vers=3,lock "$address:$work/backing" "$mount" ;;
    smb) mount -t cifs -o guest,vers=3.1.1 "//$address/backing" "$mount" ;;
    smb-nobrl) mount -t cifs -o guest,vers=3.1.1,nobrl "//$address/backing" "$mount" ;;
    sshfs) sshfs -F "$work/ssh_config" "files:$work/backing" "$mount" ;;
    bindfs) bindfs "$work/backing" "$mount" ;;
  esac
}

# Runs a command under the host name of the machine 1 or 2.
on_machine() {
  local machine=$1
  shift
  unshare --uts bash -c 'hostname "$0" && "$@"' "machine$machine" "$@"
}

# Leaves the medium empty and mounted at $work/mount1, and with `two` at $work/mount2 as well.
mount_medium() {
  local medium=$1 machine
  mkdir -p "$work/backing" "$work/mount1" "$work/mount2"
  rm -rf "${work:?}"/backing/* "$work/image"
  if has_image "$medium"; then
    make_image "$medium" "$work/image" &&
      mount_image "$medium" "$work/image" "$work/mount1"
    return
  fi
  start_server "$medium" || return
  export -f mount_folder
  export work
  for machine in 1 ${2:+2}; do
    on_machine "$machine" mount_folder "$medium" "$machine" "$work/mount$machine" || return
  done
  if [ -n "${2:-}" ] && [ "$(stat -c %d "$work/mount1")" = "$(stat -c %d "$work/mount2")" ]; then
    echo "$medium: both mounts have one cache" >&2
    return 1
  fi
}

unmount_all() {
  local place tries
  for place in "$work/mount1" "$work/mount2" "$work/copy"; do
    for tries in 1 2 3 4 5; do
      mountpoint -q "$place" 2>/dev/null || break
      umount "$place" 2>/dev/null || sleep "0.$tries"
    done
    if mountpoint -q "$place" 2>/dev/null; then
      umount -l "$place"
    fi
  done
}

# A copy of the medium in a file or folder.
copy_medium() {
  if has_image "$1"; then
    cp --sparse=always "$work/image" "$2"
  else
    cp -r "$work/backing" "$2"
  fi
}

# Shows such a copy, repaired as the next mount repairs it, at $work/copy.
open_copy() {
  rm -rf "$work/copy"
  if has_image "$1"; then
    mkdir "$work/copy"
    mount_image "$1" "$2" "$work/copy"
  else
    mv "$2" "$work/copy"
  fi
}

start_server() {
  case $1 in
    nfs*) [ -e "$work/nfs-runs" ] || start_nfs ;;
    smb*) [ -e "$work/smb-runs" ] || start_smb ;;
    sshfs) [ -e "$work/sshd.pid" ] || start_sshd ;;
  esac
}

start_nfs() {
  local daemon
  modprobe nfsd
  mountpoint -q /proc/fs/nfsd || mount -t nfsd nfsd /proc/fs/nfsd
  mkdir -p /run/rpcbind /run/sendsigs.omit.d /var/lib/nfs/sm /var/lib/nfs/v4recovery
  rpcbind
  rpc.statd --no-notify 2>/dev/null
  # Nobody has locks to reclaim: the first lock needn't wait for the end of that time.
  echo 1 >/proc/sys/fs/nfs/nlm_grace_period 2>/dev/null || true
  exportfs -o rw,no_root_squash,insecure,fsid=0,no_subtree_check,sync "127.0.0.0/8:$work/backing"
  rpc.nfsd --grace-time 10 --lease-time 10 4
  rpc.mountd
  sleep 1
  echo Y >/proc/fs/nfsd/v4_end_grace 2>/dev/null || true
  sleep 11
  touch "$work/nfs-runs"
}

start_smb() {
  ip address add 127.0.0.2/8 dev lo 2>/dev/null || true
  mkdir -p "$work/samba"
  cat >"$work/smb.conf" <<CONF
[global]
  interfaces = 127.0.0.1/8 127.0.0.2/8
  bind interfaces only = yes
  smb ports = 445
  disable netbios = yes
  map to guest = Bad User
  log file = $work/samba/log
  lock directory = $work/samba
  state directory = $work/samba
  cache directory = $work/samba
  private dir = $work/samba
  pid directory = $work/samba
  ncalrpc dir = $work/samba
  load printers = no
  printing = bsd
[backing]
  path = $work/backing
  read only = no
  guest ok = yes
  force user = root
CONF
  smbd -D -s "$work/smb.conf"
  sleep 2
  touch "$work/smb-runs"
}

start_sshd() {
  local port=$((20000 + RANDOM % 20000))
  ssh-keygen -q -t ed25519 -N '' -f "$work/hostkey"
  ssh-keygen -q -t ed25519 -N '' -f "$work/userkey"
  cp "$work/userkey.pub" "$work/authorized"
  cat >"$work/sshd_config" <<CONF
ListenAddress 127.0.0.1
Port $port
HostKey $work/hostkey
AuthorizedKeysFile $work/authorized
PidFile $work/sshd.pid
PermitRootLogin prohibit-password
StrictModes no
UsePAM no
Subsystem sftp internal-sftp
CONF
  cat >"$work/ssh_config" <<CONF
Host files
  HostName 127.0.0.1
  Port $port
  User root
  IdentityFile $work/userkey
  StrictHostKeyChecking no
  UserKnownHostsFile /dev/null
  LogLevel ERROR
CONF
  mkdir -p /run/sshd
  /usr/sbin/sshd -f "$work/sshd_config"
  sleep 1
}

stop_servers() {
  if [ -s "$work/sshd.pid" ]; then
    kill "$(cat "$work/sshd.pid")" || true
  fi
}
