# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2154
# Sourced by installed.sh: installs packages and creates an account, and removes them again.
tester=zviptv-tester
packages_before='' accounts_before='' ours=''

list_packages() { dpkg-query -W -f '${db:Status-Status} ${binary:Package}\n' | sed -n 's/^installed //p' | sort; }
list_accounts() { { getent passwd | sed 's/:.*//; s/^/user /'; getent group | sed 's/:.*//; s/^/group /'; } | sort; }

# install_packages DEB...
install_packages() {
    local deb
    packages_before=$(list_packages)
    accounts_before=$(list_accounts)
    for deb in "$@"; do
        ours+=" $(dpkg-deb -f "$deb" Package)"
    done
    # A system bus is only recommended. Packages that are already installed are not downloaded again. Container images
    # leave out documentation.
    dpkg-query -W -f '${Status}' dbus 2>/dev/null | grep -q 'ok installed' || set -- "$@" dbus
    DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends --reinstall \
        -o DPkg::Options::='--path-include=/usr/share/doc/zv-iptv-doc/*' \
        -o DPkg::Options::='--path-include=/usr/share/man/*/zv*' "$@" >"$work/apt.log" 2>&1 || {
        cat "$work/apt.log" >&2
        return 1
    }
}

add_tester() { useradd --system --no-create-home --home-dir "$work/home" --groups zviptv-apps "$tester"; }

# Dependencies are removed with the packages, and none of their files may remain.
remove_packages() {
    [ -n "$ours" ] || return 0
    local files package added file status=0
    for package in $ours; do
        files+=$(dpkg -L "$package" 2>/dev/null)$'\n'
    done
    mapfile -t added < <(comm -13 <(echo "$packages_before") <(list_packages))
    [ ${#added[@]} -eq 0 ] ||
        DEBIAN_FRONTEND=noninteractive apt-get purge -y -q "${added[@]}" >"$work/apt.log" 2>&1 || {
        cat "$work/apt.log" >&2
        status=1
    }
    while read -r file; do
        if [ -f "$file" ] || [ -L "$file" ] && ! dpkg -S "$file" >/dev/null 2>&1; then
            echo "left behind: $file" >&2
            status=1
        fi
    done <<<"$files"
    return "$status"
}

# Packages leave their accounts on the machine, so that their numbers are not reused. A test removes them.
remove_accounts() {
    if getent passwd "$tester" >/dev/null; then
        userdel "$tester"
    fi
    [ -n "$ours" ] || return 0
    local kind name
    while read -r kind name; do
        case $kind:$name in
        user:zviptv) userdel zviptv ;;
        group:zviptv-apps) groupdel zviptv-apps ;;
        esac
    done < <(comm -13 <(echo "$accounts_before") <(list_accounts))
}
