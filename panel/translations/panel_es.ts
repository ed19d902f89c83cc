<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>JoinPage</name>
    <message>
        <source>Hidden network</source>
        <translation>Red oculta</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Nombre</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Contraseña</translation>
    </message>
    <message>
        <source>Hide</source>
        <translation>Ocultar</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>Mostrar</translation>
    </message>
    <message>
        <source>8 to 63 characters</source>
        <translation>De 8 a 63 caracteres</translation>
    </message>
    <message>
        <source>8 to 63 characters, or none for an open network</source>
        <translation>De 8 a 63 caracteres, o ninguno si la red es abierta</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Conectar</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Could not open Wi-Fi control socket: %1</source>
        <translation>No se pudo abrir el socket de control del Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not bind temporary Wi-Fi control socket: %1</source>
        <translation>No se pudo vincular el socket temporal de control del Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not protect temporary Wi-Fi control socket: %1</source>
        <translation>No se pudo proteger el socket temporal de control del Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not connect to wpa_supplicant: %1</source>
        <translation>No se pudo conectar con wpa_supplicant: %1</translation>
    </message>
    <message>
        <source>Could not send Wi-Fi command: %1</source>
        <translation>No se pudo enviar la orden al Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not read Wi-Fi response: %1</source>
        <translation>No se pudo leer la respuesta del Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not start Wi-Fi scan: %1</source>
        <translation>No se pudo iniciar la búsqueda de redes: %1</translation>
    </message>
    <message>
        <source>Could not select saved Wi-Fi network: %1</source>
        <translation>No se pudo seleccionar la red guardada: %1</translation>
    </message>
    <message>
        <source>Could not set Wi-Fi network name: %1</source>
        <translation>No se pudo establecer el nombre de la red: %1</translation>
    </message>
    <message>
        <source>Could not set open-network security: %1</source>
        <translation>No se pudo configurar la red como abierta: %1</translation>
    </message>
    <message>
        <source>Could not set WPA security: %1</source>
        <translation>No se pudo configurar la seguridad WPA: %1</translation>
    </message>
    <message>
        <source>Could not set WPA password: %1</source>
        <translation>No se pudo establecer la contraseña WPA: %1</translation>
    </message>
    <message>
        <source>Could not enable Wi-Fi network: %1</source>
        <translation>No se pudo activar la red: %1</translation>
    </message>
    <message>
        <source>Could not select Wi-Fi network: %1</source>
        <translation>No se pudo seleccionar la red: %1</translation>
    </message>
    <message>
        <source>Could not save Wi-Fi network: %1</source>
        <translation>No se pudo guardar la red: %1</translation>
    </message>
    <message>
        <source>Could not disconnect Wi-Fi: %1</source>
        <translation>No se pudo desconectar el Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not remove Wi-Fi network: %1</source>
        <translation>No se pudo eliminar la red: %1</translation>
    </message>
    <message>
        <source>Could not save removed Wi-Fi network: %1</source>
        <translation>No se pudo guardar la eliminación de la red: %1</translation>
    </message>
    <message>
        <source>%1 is not a saved network.</source>
        <translation>%1 no es una red guardada.</translation>
    </message>
    <message>
        <source>Wi-Fi control socket path is too long.</source>
        <translation>La ruta del socket de control del Wi-Fi es demasiado larga.</translation>
    </message>
    <message>
        <source>Invalid wpa_supplicant control command.</source>
        <translation>Orden no válida para wpa_supplicant.</translation>
    </message>
    <message>
        <source>wpa_supplicant did not create a network profile.</source>
        <translation>wpa_supplicant no creó un perfil de red.</translation>
    </message>
    <message>
        <source>You may not control Wi-Fi. Your user must be in the group netdev.</source>
        <translation>No tiene permiso para controlar el Wi-Fi. Su usuario debe estar en el grupo netdev.</translation>
    </message>
    <message>
        <source>The Wi-Fi service is not running.</source>
        <translation>El servicio Wi-Fi no está en marcha.</translation>
    </message>
    <message>
        <source>The Wi-Fi service does not answer.</source>
        <translation>El servicio Wi-Fi no responde.</translation>
    </message>
</context>
<context>
    <name>ListPage</name>
    <message>
        <source>%1 is out of range.</source>
        <translation>%1 está fuera de alcance.</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>fuera de alcance</translation>
    </message>
    <message>
        <source>weak signal</source>
        <translation>señal débil</translation>
    </message>
    <message>
        <source>fair signal</source>
        <translation>señal media</translation>
    </message>
    <message>
        <source>good signal</source>
        <translation>buena señal</translation>
    </message>
    <message>
        <source>very good signal</source>
        <translation>muy buena señal</translation>
    </message>
    <message>
        <source>Wi-Fi</source>
        <translation>Wi-Fi</translation>
    </message>
    <message>
        <source>Saved</source>
        <translation>Guardadas</translation>
    </message>
    <message>
        <source>In range</source>
        <translation>Disponibles</translation>
    </message>
    <message>
        <source>saved</source>
        <translation>guardada</translation>
    </message>
    <message>
        <source>Details of %1</source>
        <translation>Detalles de %1</translation>
    </message>
    <message>
        <source>Scan</source>
        <translation>Buscar</translation>
    </message>
    <message>
        <source>Hidden network</source>
        <translation>Red oculta</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Wi-Fi</source>
        <translation>Wi-Fi</translation>
    </message>
    <message>
        <source>New password</source>
        <translation>Nueva contraseña</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>Reintentar</translation>
    </message>
</context>
<context>
    <name>NetworkPage</name>
    <message>
        <source>Name</source>
        <translation>Nombre</translation>
    </message>
    <message>
        <source>Security</source>
        <translation>Seguridad</translation>
    </message>
    <message>
        <source>WPA, with a password</source>
        <translation>contraseña WPA</translation>
    </message>
    <message>
        <source>Signal</source>
        <translation>Señal</translation>
    </message>
    <message>
        <source>%1 dBm</source>
        <translation>%1 dBm</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>fuera de alcance</translation>
    </message>
    <message>
        <source>Channel</source>
        <translation>Canal</translation>
    </message>
    <message>
        <source>%1 (%2 GHz)</source>
        <translation>%1 (%2 GHz)</translation>
    </message>
    <message>
        <source>Access point</source>
        <translation>BSSID</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Dirección IP</translation>
    </message>
    <message>
        <source>This kind of network has to be set up in a file; see the set-up guide.</source>
        <translation>Este tipo de red se configura en un archivo; consulte la guía de configuración.</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Desconectar</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Conectar</translation>
    </message>
    <message>
        <source>Forget</source>
        <translation>Olvidar</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>Volver</translation>
    </message>
    <message>
        <source>Forget %1? Its password is deleted.</source>
        <translation>¿Olvidar %1? Se borrará su contraseña.</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Conservar</translation>
    </message>
    <message>
        <source>open</source>
        <translation>red abierta</translation>
    </message>
</context>
<context>
    <name>Networks</name>
    <message>
        <source>enterprise</source>
        <translation>empresa</translation>
    </message>
    <message>
        <source>with password</source>
        <translation>con contraseña</translation>
    </message>
    <message>
        <source>open</source>
        <translation>abierta</translation>
    </message>
    <message>
        <source>other security</source>
        <translation>otra seguridad</translation>
    </message>
</context>
<context>
    <name>Wifi</name>
    <message>
        <source>Connected - %1</source>
        <translation>Conectado - %1</translation>
    </message>
    <message>
        <source>Connected, but no address. Is a DHCP client running?</source>
        <translation>Conectado, pero sin dirección. ¿Hay un cliente DHCP en marcha?</translation>
    </message>
    <message>
        <source>Connected, waiting for an address</source>
        <translation>Conectado, esperando una dirección</translation>
    </message>
    <message>
        <source>Wi-Fi is switched off.</source>
        <translation>El Wi-Fi está desactivado.</translation>
    </message>
    <message>
        <source>Connecting to %1</source>
        <translation>Conectando a %1</translation>
    </message>
    <message>
        <source>Not connected</source>
        <translation>No conectado</translation>
    </message>
    <message>
        <source>Looking for networks</source>
        <translation>Buscando redes</translation>
    </message>
    <message>
        <source>Could not connect to %1.</source>
        <translation>No se pudo conectar a %1.</translation>
    </message>
    <message>
        <source>Could not connect. Check the password.</source>
        <translation>No se pudo conectar. Compruebe la contraseña.</translation>
    </message>
    <message>
        <source>Could not connect. Check the name and the password.</source>
        <translation>No se pudo conectar. Compruebe el nombre y la contraseña.</translation>
    </message>
    <message>
        <source>Could not connect to %1. It may be out of range, or its password has changed.</source>
        <translation>No se pudo conectar a %1. Puede que esté fuera de alcance o que su contraseña haya cambiado.</translation>
    </message>
    <message>
        <source>Forgetting %1</source>
        <translation>Olvidando %1</translation>
    </message>
    <message>
        <source>Disconnecting</source>
        <translation>Desconectando</translation>
    </message>
</context>
</TS>
