#!/usr/bin/perl
# SPDX-License-Identifier: BSD-3-Clause
# Asks an agent through netdisco's library, SNMP::Info, and writes what it tells as JSON: community -> method -> row ->
# value. Communities have commas between them.
#   snmp_info.pl HOST PORT FOLDER-OF-MIBS COMMUNITIES METHOD...
use strict;
use warnings;
use JSON::PP;
use SNMP::Info::IPv6;

my ( $host, $port, $mibs, $communities, @methods ) = @ARGV;

# The library insists on every module that a class might want; the other two are older and another maker's.
%SNMP::Info::IPv6::MIBS = ( 'IP-MIB' => 'ipv6InterfaceTableLastChange', %SNMP::Info::MIBS );
%SNMP::Info::IPv6::GLOBALS = %SNMP::Info::GLOBALS;
%SNMP::Info::IPv6::FUNCS   = ( %SNMP::Info::FUNCS, %SNMP::Info::IPv6::FUNCS );
%SNMP::Info::IPv6::MUNGE   = ( %SNMP::Info::MUNGE, %SNMP::Info::IPv6::MUNGE );

my %told;
for my $community ( split /,/, $communities ) {
    my $info = SNMP::Info::IPv6->new(
        AutoSpecify       => 0,
        DestHost          => $host,
        RemotePort        => $port,
        Community         => $community,
        Version           => 2,
        MibDirs           => [$mibs],
        Timeout           => 3_000_000,
        Retries           => 20,
        IgnoreNetSNMPConf => 1,
    ) or die "no session with $community\n";
    for my $method (@methods) {
        my $result = $info->$method();
        warn "$community: $method: " . ( $info->error() // 'nothing' ) . "\n" unless defined $result;
        $told{$community}{$method} = $result;
    }
}
print JSON::PP->new->canonical->encode( \%told );
